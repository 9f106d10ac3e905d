// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <memory>
#include <utility>

#include "ProcessUtils.h"
#include "Semaphore.h"

class OrbIpcSession;

// One connection of a session, from the creation of its socket until its receiver has ended. Shared
// by the session, the thread that connects and those that close. A session that connects again has
// a new one, so no thread confuses it with an earlier connection. The session's mStateLock guards
// all fields that are not constant: a thread that closes takes the socket and finds out who will
// signal the end in one step.
struct OrbIpcConnection {
  // Which thread will signal `ended`.
  enum class EndTold { ByNobody, ByConnectingThread, ByReceiver };

  OrbIpcConnection(const SharedSocket& ours, std::shared_ptr<Semaphore> semaphore)
      : identity(ours), ended(std::move(semaphore)), socket(ours) {}

  const std::weak_ptr<IpcSocket> identity;  // the socket, without keeping it open
  const std::shared_ptr<Semaphore> ended;
  SharedSocket socket;  // empty as soon as the connection is lost or closed
  EndTold endTold = EndTold::ByNobody;
  unsigned int sessionId = 0;
  std::shared_ptr<ProcessUtilsGlobals> globals;  // held while the socket is registered
  // Set while the session is closed for good: keeps it for the receiver, which still has to tell it
  // about its end.
  std::shared_ptr<OrbIpcSession> keptSession;
};
