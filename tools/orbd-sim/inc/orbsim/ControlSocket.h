// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

#pragma once

#include <memory>
#include <string>

#include "orbsim/Daemon.h"

namespace orbsim {

// Accepts orders for a running daemon on a socket that only its owner may use. An order is one line
// with a JSON object: a step of a scenario without its time, or {"status":true}. The answer is one
// line of JSON: {"ok":true}, or {"ok":false,"error":"why not"}, with "wrong":true if the line was
// not a valid order. The owner's thread calls open() and close(); the class has its own threads.
class ControlSocket {
 public:
  explicit ControlSocket(Daemon& daemon);
  ~ControlSocket();  // closes
  ControlSocket(const ControlSocket&) = delete;
  ControlSocket& operator=(const ControlSocket&) = delete;

  // Listens on the path. False with error() on failure. Call it only once.
  bool open(const std::string& path);
  const std::string& error() const;
  // Call it before the daemon stops.
  void close();

 private:
  struct Parts;

  std::unique_ptr<Parts> mParts;
};

}  // namespace orbsim
