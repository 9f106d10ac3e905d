// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <memory>

#include "IpcFrame.h"
#include "Mutex.h"
#include "Semaphore.h"

// Receives frames and the end of the socket from a receiver thread. Called on the receiver thread
// with no lock held. The receiver shares the semaphore, so that it can signal it even after the
// handler was destroyed. It reaches the handler itself through a weak reference; if the handler is
// not shared, its owner waits for the semaphore. mSemaphoreLock guards mSemaphore: one thread may
// begin a new connection while another reads it.
class ProcessHandler {
 public:
  ProcessHandler() = default;
  ProcessHandler(const ProcessHandler&) = delete;
  ProcessHandler& operator=(const ProcessHandler&) = delete;
  virtual ~ProcessHandler() = default;

  // The frame belongs to the caller and is valid until the call returns: copy what you need later.
  virtual void handleMsg(ipcMsg_t* msg);
  // The socket of session @p sessionId is lost or closed. Not called for a socket that its owner
  // deregistered, nor for one that a new socket with the same id has replaced.
  virtual void handleSessionEnd(unsigned int sessionId);
  // The receiver of @p sockFd reads no more. Always the last call for a socket, also if
  // handleSessionEnd() was not called: so a session without an id, or one whose id belongs to a new
  // socket, notices its end.
  virtual void handleReceiverEnd(int sockFd);

  // Signalled once when the receiver thread of the latest socket has ended.
  std::shared_ptr<Semaphore> threadSemaphore() const {
    const LockGuard lock(mSemaphoreLock);
    return mThreadSemaphore;
  }

 protected:
  // For a new connection. The old semaphore may still be signalled, and then the next wait would
  // return at once.
  void setThreadSemaphore(std::shared_ptr<Semaphore> semaphore) {
    const LockGuard lock(mSemaphoreLock);
    mThreadSemaphore.swap(semaphore);
  }

 private:
  mutable Mutex mSemaphoreLock;
  std::shared_ptr<Semaphore> mThreadSemaphore ORB_GUARDED_BY(mSemaphoreLock) =
      std::make_shared<Semaphore>();
};
