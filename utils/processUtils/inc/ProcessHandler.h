// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <cstdint>
#include <memory>
#include <utility>

#include "IpcFrame.h"
#include "Mutex.h"
#include "Semaphore.h"

// What a receiver thread hands frames and the end of its socket to. Called on the receiver thread
// with no lock held. The receiver shares the semaphore, so that it can signal it whatever became of
// the handler; it reaches the handler itself through a weak reference or, for a handler that is not
// shared, on the owner's promise that it waits for the semaphore. mSemaphoreLock guards which
// semaphore that is: one thread may begin a new connection while another asks.
class ProcessHandler {
 public:
  ProcessHandler() = default;
  ProcessHandler(const ProcessHandler&) = delete;
  ProcessHandler& operator=(const ProcessHandler&) = delete;
  virtual ~ProcessHandler() = default;

  // The frame belongs to the caller and is gone after the call: copy what is to be kept.
  virtual void handleMsg(ipcMsg_t* msg);
  // The socket of session @p sessionId is lost or closed. Not called for a socket that its owner
  // deregistered, nor for one that a new socket with the same id has displaced.
  virtual void handleSessionEnd(unsigned int sessionId);
  // The receiver of @p sockFd reads no more. Always the last call for a socket; also comes when
  // handleSessionEnd() did not, so that a session without an id, or one whose id was given away,
  // can notice its end.
  virtual void handleReceiverEnd(int sockFd);

  // Signalled once when the receiver thread of the latest socket has ended.
  std::shared_ptr<Semaphore> threadSemaphore() const {
    const LockGuard lock(mSemaphoreLock);
    return mThreadSemaphore;
  }

 protected:
  // For a new connection: the count saturates, so that the former semaphore, which may still be
  // raised, would let the next wait pass at once.
  void setThreadSemaphore(std::shared_ptr<Semaphore> semaphore) {
    const LockGuard lock(mSemaphoreLock);
    mThreadSemaphore.swap(semaphore);
  }

 private:
  mutable Mutex mSemaphoreLock;
  std::shared_ptr<Semaphore> mThreadSemaphore ORB_GUARDED_BY(mSemaphoreLock) =
      std::make_shared<Semaphore>();
};
