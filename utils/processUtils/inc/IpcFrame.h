// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <cstddef>
#include <cstdint>

// 32-bit endpoint of the IPC. 1 is the daemon, 101 to 108 are clients of this library.
enum class ProcessId : int32_t {
  Daemon = 1,
  Client101 = 101,
  Client102 = 102,
  Client104 = 104,
  LCE = 105,
  LLE = 106,
  LLI = 107,
  Other = 108,
};

// Endpoints travel as 64-bit words, widened with their sign.
constexpr uint64_t toWire(ProcessId id) {
  return static_cast<uint64_t>(static_cast<int64_t>(static_cast<int32_t>(id)));
}

// The frame, on the wire and in memory alike: six words in host byte order, then the payload.
struct ipcMsg_t {
  uint64_t srcProcessId;
  uint64_t dstProcessId;
  uint64_t msgId;
  int64_t subsystemId;
  uint64_t sessionId;
  uint64_t payloadLength;

  unsigned char* payload() { return reinterpret_cast<unsigned char*>(this + 1); }
  const unsigned char* payload() const { return reinterpret_cast<const unsigned char*>(this + 1); }
};

static_assert(sizeof(ipcMsg_t) == 48, "the header is 48 bytes on the wire");
static_assert(offsetof(ipcMsg_t, sessionId) == 32 && offsetof(ipcMsg_t, payloadLength) == 40,
              "the header's words follow each other");
