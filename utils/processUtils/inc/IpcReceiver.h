// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <memory>
#include <utility>

#include "IpcSocket.h"
#include "ProcessHandler.h"

// How a receiver thread reaches its handler. A shared handler: through a weak reference, so that
// the thread does not keep it alive while it waits for data. Any other: its owner keeps it alive
// longer than the thread.
class HandlerRef {
 public:
  // @p semaphore is the one to signal. For a new connection the handler has another semaphore.
  HandlerRef(const std::shared_ptr<ProcessHandler>& handler, std::shared_ptr<Semaphore> semaphore)
      : mWeak(handler), mSemaphore(std::move(semaphore)) {}
  explicit HandlerRef(ProcessHandler& handler)
      : mBare(&handler), mSemaphore(handler.threadSemaphore()) {}

  // Empty if the handler was destroyed.
  std::shared_ptr<ProcessHandler> lock() const {
    return mBare ? std::shared_ptr<ProcessHandler>(std::shared_ptr<void>(), mBare) : mWeak.lock();
  }
  const std::shared_ptr<Semaphore>& semaphore() const { return mSemaphore; }

 private:
  std::weak_ptr<ProcessHandler> mWeak;
  ProcessHandler* mBare = nullptr;
  std::shared_ptr<Semaphore> mSemaphore;
};

// Body of a receiver thread: reads frames and hands them to the handler until the socket fails or
// ends. Then it deregisters the socket, tells the handler, closes the socket and signals the
// semaphore.
void receiveFrames(SharedSocket socket, HandlerRef handler);
