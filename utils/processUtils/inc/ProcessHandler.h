// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <cstdint>
#include <memory>

#include "IpcFrame.h"
#include "Semaphore.h"

// What a receiver thread hands frames and the end of its socket to. Called on the receiver thread
// with no lock held. The receiver shares the semaphore, so that it can signal it whatever became of
// the handler; it reaches the handler itself through a weak reference or, for a handler that is not
// shared, on the owner's promise that it waits for the semaphore.
class ProcessHandler {
 public:
  ProcessHandler() = default;
  ProcessHandler(const ProcessHandler&) = delete;
  ProcessHandler& operator=(const ProcessHandler&) = delete;
  virtual ~ProcessHandler() = default;

  // The frame belongs to the caller and is gone after the call: copy what is to be kept.
  virtual void handleMsg(ipcMsg_t* msg);
  // The socket of session @p sessionId is lost. Not called for a socket that its owner
  // deregistered.
  virtual void handleSessionEnd(unsigned int sessionId);
  // The receiver of @p sockFd reads no more. Always the last call for a socket; also comes when
  // handleSessionEnd() did not, so that a session without an id can notice its end.
  virtual void handleReceiverEnd(int sockFd);

  std::shared_ptr<Semaphore> threadSemaphore() const { return mThreadSemaphore; }

 protected:
  // Signalled once when the receiver thread of the present socket has ended. Replaced by a fresh
  // one before each connection, for its count saturates and would let the next wait pass at once.
  std::shared_ptr<Semaphore> mThreadSemaphore = std::make_shared<Semaphore>();
};
