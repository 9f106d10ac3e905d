// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <atomic>
#include <utility>

#include "AtomicQueue.h"
#include "Log.h"
#include "Mutex.h"
#include "ProcessHandler.h"
#include "Semaphore.h"

// A message queue with an event loop. Without a running loop a message is handled at once on the
// thread that posts it, which is how every client session works; that takes no lock. mHandlerMutex
// makes the test of mRunning in postToSelf() and its change in stop() one step each, so that
// nothing is queued after stop(); no lock is held while a message is handled.
template <class T>
class IpcHandler : public ProcessHandler {
 public:
  ~IpcHandler() override {
    ORB_LOGD("discarding queued messages");
    while (!mQueue.empty()) mQueue.pop();
  }

  virtual void handleEvent(T msg) = 0;

  void postToSelf(T msg) {
    if (mRunning) {
      const LockGuard lock(mHandlerMutex);
      if (mRunning) {  // still
        mQueue.push(std::move(msg));
        mQueueSemaphore.increase();
        return;
      }
    }
    handleEvent(std::move(msg));
  }

  // The event loop; runs on the calling thread until stop(). One wake-up may stand for many
  // messages.
  void start() {
    ORB_LOGD("running infinite loop");
    while (mRunning) {
      while (mRunning && !mQueue.empty()) handleEvent(mQueue.pop());
      if (mRunning) mQueueSemaphore.decrease();
    }
  }

  // Ends the loop; messages still queued are not handled. Does not wait.
  void stop() {
    ORB_LOGD("IpcHandler stop called");
    const LockGuard lock(mHandlerMutex);
    if (!mRunning) return;
    mRunning = false;
    mQueueSemaphore.increase();
  }

 protected:
  void setRunning() {
    const LockGuard lock(mHandlerMutex);
    mRunning = true;
  }

 private:
  Mutex mHandlerMutex;
  Semaphore mQueueSemaphore;
  AtomicQueue<T> mQueue;
  std::atomic<bool> mRunning{false};
};
