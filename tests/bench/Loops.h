// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <atomic>
#include <thread>

#include "BareQueue.h"
#include "Countdown.h"
#include "EventManager.h"
#include "OrbEventHandler.h"

// Each loop has its own thread, which counts the numbers that any thread posts. A benchmark owns
// it, waits on `handled` and ends it.

class BareLoop {
 public:
  BareLoop()
      : mThread([this] {
          while (mQueue.take() != kEnd) handled.one();
        }) {}
  BareLoop(const BareLoop&) = delete;
  BareLoop& operator=(const BareLoop&) = delete;
  ~BareLoop() {
    mQueue.post(kEnd);
    mThread.join();
  }
  void post(int item) { mQueue.post(item); }

  Countdown handled;

 private:
  static constexpr int kEnd = -1;
  BareQueue<int> mQueue;
  std::thread mThread;
};

// The library's event loop, as the SDK worker runs it.
class EventLoop {
 public:
  EventLoop()
      : mHandler(mManager, handled), mThread([this] {
          while (mRunning) mManager.processEvents(nullptr);
        }) {}
  EventLoop(const EventLoop&) = delete;
  EventLoop& operator=(const EventLoop&) = delete;
  ~EventLoop() {
    mRunning = false;
    mManager.wake();
    mThread.join();
  }
  void post(int item) { mHandler.postEvent(item); }

  Countdown handled;

 private:
  class Handler : public orb::utils::OrbEventHandler<int> {
   public:
    Handler(orb::utils::EventManager& manager, Countdown& handled)
        : OrbEventHandler("bench", nullptr, &manager), mHandled(handled) {}
    void handleEvent(int) override { mHandled.one(); }

   private:
    Countdown& mHandled;
  };

  orb::utils::EventManager mManager;
  Handler mHandler;
  std::atomic<bool> mRunning{true};
  std::thread mThread;
};
