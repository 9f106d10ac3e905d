// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <atomic>
#include <memory>

#include "UniqueFd.h"

// A socket to a peer. One thread reads it, another one writes it, and a third one shuts it down.
// The last holder closes the descriptor, so no thread calls the kernel with a reused number. The
// table of registered sockets writes mRegistered under its lock; senders read it without a lock.
class IpcSocket : public UniqueFd {
 public:
  using UniqueFd::UniqueFd;

  // Whether this socket is registered under its (peer, session) pair. If not, nothing is sent on it
  // any more.
  bool isRegistered() const { return mRegistered; }
  void setRegistered(bool registered) { mRegistered = registered; }

 private:
  std::atomic<bool> mRegistered{false};
};

using SharedSocket = std::shared_ptr<IpcSocket>;
