// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <sys/socket.h>
#include <sys/un.h>

#include <cstdint>
#include <cstring>
#include <memory>
#include <vector>

#include "Check.h"
#include "UniqueFd.h"

// The daemon's socket and its handshake records, for targets that act as the daemon themselves.
namespace hostile {

using Bytes = std::vector<uint8_t>;

constexpr char kSocketPath[] = "/dev/socket/orb";
constexpr int32_t kInit = 1;
constexpr int32_t kResponse = 2;
constexpr int32_t kComplete = 3;
constexpr size_t kRecordSize = 8;
constexpr size_t kResponseSize = 12;

inline Bytes record(int32_t type, int32_t sessionId) {
  Bytes bytes(kRecordSize);
  std::memcpy(bytes.data(), &type, sizeof type);
  std::memcpy(bytes.data() + sizeof type, &sessionId, sizeof sessionId);
  return bytes;
}

// The word at a position in a record.
inline int32_t word(const Bytes& bytes, size_t index) {
  int32_t value = 0;
  std::memcpy(&value, bytes.data() + index * sizeof value, sizeof value);
  return value;
}

// A listening socket that replaces any earlier one.
inline std::unique_ptr<UniqueFd> listenAtSocket() {
  auto listener = std::make_unique<UniqueFd>(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
  sockaddr_un address = {};
  address.sun_family = AF_UNIX;
  std::memcpy(address.sun_path, kSocketPath, sizeof kSocketPath);
  unlink(kSocketPath);
  FUZZ_CHECK(bind(listener->get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) ==
             0);
  FUZZ_CHECK(listen(listener->get(), 16) == 0);
  return listener;
}

}  // namespace hostile
