// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

// Everything that the library and the daemon of this process send on sockets, in the order of
// sending. The program's send() is used instead of the C library's. For any thread.
namespace wiretap {

struct Piece {
  bool fromDaemon;  // its end of the socket has the socket's path
  std::vector<uint8_t> bytes;
};

void clear();
// Waits for this number of pieces, and takes all pieces so far.
std::vector<Piece> take(size_t count);

}  // namespace wiretap
