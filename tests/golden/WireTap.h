// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

// Everything that this process sends on sockets, by the library and by the daemon beside it, in the
// order in which it went out. The program's own send() comes before the C library's. Any thread.
namespace wiretap {

struct Piece {
  bool fromDaemon;  // its end of the socket has the socket's name
  std::vector<uint8_t> bytes;
};

void clear();
// Waits until so many have gone out, and takes them and whatever else has.
std::vector<Piece> take(size_t count);

}  // namespace wiretap
