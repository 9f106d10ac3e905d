// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <vector>

#include "Handshaker.h"
#include "UniqueFd.h"

// A daemon that does what a script says and nothing by itself: it has no thread, everything happens
// in the call. What waits does so for a condition that may never come, so only for a moment. Used
// by one thread.
class HostileDaemon {
 public:
  using Timeout = std::chrono::milliseconds;
  using Bytes = hostile::Bytes;

  // Listening or not; a closed listener leaves its file behind, a removed one does not.
  void listen() { mListener = hostile::listenAtSocket(); }
  void stopListening(bool remove);

  // Takes the next client in; false when none comes.
  bool accept(Timeout timeout);
  // The same with the whole handshake as it should be, up to the client's first frame: before that,
  // what follows could be one read with the last record.
  void serve(Timeout timeout);

  // The rest picks one of the connections by any number, and does nothing without one.
  void send(uint8_t connection, const Bytes& bytes);
  // Reads all that the client has sent; waits for the first of it.
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
