// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

namespace orbctl {

// Where the library looks for the daemon.
constexpr char kSocketPath[] = "/dev/socket/orb";

// Where it finds it from this process: at the path in ORB_SOCKET with the redirection of
// `orb-sandbox --redirect`.
std::string daemonSocket();

// What a socket path is found to be, from the file system inwards.
enum class SocketState {
  kNoFolder,
  kNoSocket,
  kNotASocket,
  kNoPermission,
  kRefused,       // nobody listens
  kNotAccepting,  // the connection waits in the listener's queue, or finds that full
  kSilent,        // accepted, and a record of the handshake does not come
  kClosed,        // closed in the handshake
  kWrongRecord,   // what came is not the record that had to come
  kWell,
  kFailed  // the system refused something else
};

struct SocketFinding {
  SocketState state = SocketState::kFailed;
  std::string reason;          // one sentence: what was found
  std::string next;            // what to do about it; empty when all is well
  std::vector<uint8_t> bytes;  // what came in the place of a record
  uint32_t sessionId = 0;      // of a handshake that went well
};

// The word for it: in the output, in JSON and in the documents.
const char* wordOf(SocketState state);

// Connects to the socket, plays the client's side of the handshake and closes the connection: a
// daemon sees a client that comes and goes. Each step waits for so long at the most. It shares no
// code with the library, which can only tell that a service is down.
SocketFinding probeSocket(const std::string& path, std::chrono::milliseconds timeout);

// "01 00 00 00 07 00 00 00 (words 1, 7)": bytes as they came, and as the numbers of a record.
std::string hexText(const std::vector<uint8_t>& bytes);

}  // namespace orbctl
