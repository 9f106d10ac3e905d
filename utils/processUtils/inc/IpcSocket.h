// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <atomic>
#include <memory>

#include "UniqueFd.h"

// A socket to a peer. One thread reads it, another one writes it and a third one shuts it down. The
// last holder closes the number, so nobody ever calls the kernel with a number that was given away.
// The table of registered sockets writes mRegistered under its lock; who sends reads it without.
class IpcSocket : public UniqueFd {
 public:
  using UniqueFd::UniqueFd;

  // Whether its (peer, session) pair stands for this socket. Once another socket has the pair, or
  // none, nothing is sent on this one any more.
  bool isRegistered() const { return mRegistered; }
  void setRegistered(bool registered) { mRegistered = registered; }

 private:
  std::atomic<bool> mRegistered{false};
};

using SharedSocket = std::shared_ptr<IpcSocket>;
