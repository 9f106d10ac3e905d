// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <vector>

#include "Handshaker.h"
#include "UniqueFd.h"

// A daemon that does only what a script says. It has no thread; everything happens during the call.
// The calls that wait have a time limit, because their condition may never come. Used by one
// thread.
class HostileDaemon {
 public:
  using Timeout = std::chrono::milliseconds;
  using Bytes = hostile::Bytes;

  // Starts and stops listening. With @p remove the socket's file is removed, too.
  void listen() { mListener = hostile::listenAtSocket(); }
  void stopListening(bool remove);

  // Accepts the next client; false if none comes.
  bool accept(Timeout timeout);
  // The same, then completes the handshake and waits for the client's first frame. Earlier, the
  // client could read later bytes together with the last record.
  void serve(Timeout timeout);

  // The functions below select a connection by any number. Without a connection they do nothing.
  void send(uint8_t connection, const Bytes& bytes);
  // Waits for data of the client, then reads all that has come.
  void drain(uint8_t connection, Timeout timeout);
  void close(uint8_t connection);
  void shutDown(uint8_t connection, int how);
  void closeAll() { mConnections.clear(); }

 private:
  int pick(uint8_t connection) const;

  std::unique_ptr<UniqueFd> mListener;
  std::vector<std::unique_ptr<UniqueFd>> mConnections;
  int32_t mNextId = 1;
};
