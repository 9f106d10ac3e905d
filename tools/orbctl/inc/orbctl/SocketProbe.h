// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

namespace orbctl {

// The path at which the library connects to the daemon.
constexpr char kSocketPath[] = "/dev/socket/orb";

// The path that applies in this process: the path in ORB_SOCKET with the redirection of
// `orb-sandbox --redirect`.
std::string daemonSocket();

// The result of checking a socket path, from the file system to the handshake.
enum class SocketState {
  kNoFolder,
  kNoSocket,
  kNotASocket,
  kNoPermission,
  kRefused,       // no process listens
  kNotAccepting,  // the connection waits in the listener's queue, or the queue is full
  kSilent,        // accepted, but a record of the handshake does not come
  kClosed,        // closed during the handshake
  kWrongRecord,   // a wrong record came
  kWell,
  kFailed  // the system refused something else
};

struct SocketFinding {
  SocketState state = SocketState::kFailed;
  std::string reason;          // one sentence: the result
  std::string next;            // what to do; empty if the socket is well
  std::vector<uint8_t> bytes;  // the wrong bytes that came instead of a record
  uint32_t sessionId = 0;      // of a successful handshake
};

// The name of the state in the output, in JSON and in the documents.
const char* wordOf(SocketState state);

// Connects to the socket, does the client's part of the handshake and closes the connection. Each
// step takes at most the timeout. It shares no code with the library, because the library can only
// report that a service is down.
SocketFinding probeSocket(const std::string& path, std::chrono::milliseconds timeout);

// "01 00 00 00 07 00 00 00 (words 1, 7)": the received bytes, and the same bytes as numbers.
std::string hexText(const std::vector<uint8_t>& bytes);

}  // namespace orbctl
