// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

#pragma once

#include <memory>
#include <string>

#include "orbsim/Daemon.h"

namespace orbsim {

// Takes orders for a running daemon on a socket that only its owner may use: one JSON object in a
// line, as a step of a scenario without its time, or {"status":true}; a line of JSON answers:
// {"ok":true}, or {"ok":false,"error":"why not"}, with "wrong":true when it is no order at all.
// open() and close() belong to the owner's thread; it has threads of its own.
class ControlSocket {
 public:
  explicit ControlSocket(Daemon& daemon);
  ~ControlSocket();  // closes
  ControlSocket(const ControlSocket&) = delete;
  ControlSocket& operator=(const ControlSocket&) = delete;

  // False with error() set when the path cannot be listened on. Once only.
  bool open(const std::string& path);
  const std::string& error() const;
  // Before the daemon stops.
  void close();

 private:
  struct Parts;

  std::unique_ptr<Parts> mParts;
};

}  // namespace orbsim
