// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <memory>
#include <utility>

#include "ProcessUtils.h"
#include "Semaphore.h"

class OrbIpcSession;

// One connection of a session, from its socket to the end of whoever uses that. Shared by the
// session, the thread that connects and those that close; a session that connects again has a new
// one, so nobody mistakes one connection for another. The session's mStateLock guards what is not
// constant: whoever closes takes the socket and learns who tells of the end in one step.
struct OrbIpcConnection {
  // Who will signal `ended`.
  enum class EndTold { ByNobody, ByConnectingThread, ByReceiver };

  OrbIpcConnection(const SharedSocket& ours, std::shared_ptr<Semaphore> semaphore)
      : identity(ours), ended(std::move(semaphore)), socket(ours) {}

  const std::weak_ptr<IpcSocket> identity;  // which socket it is, without keeping it open
  const std::shared_ptr<Semaphore> ended;
  SharedSocket socket;  // empty once the connection is lost or closed, and for good
  EndTold endTold = EndTold::ByNobody;
  unsigned int sessionId = 0;
  std::shared_ptr<ProcessUtilsGlobals> globals;  // held while the socket is registered
  // While it is being closed for good: the receiver still has to find the session, which nobody
  // else may need any more.
  std::shared_ptr<OrbIpcSession> keptSession;
};
