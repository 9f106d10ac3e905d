// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <cstddef>
#include <cstdint>

// The layout of an encrypted log file. It is defined here a second time on purpose: the reader uses
// no code of the writer, so each checks the other.
//
//   file:   header (512 bytes), records back to back
//   header: the session key wrapped with RSA-OAEP, as long as the RSA key, then zeros
//   record: N (2 bytes, little-endian), IV (12), tag (16), ciphertext (N - 28), no additional data
namespace orblog {

constexpr size_t kHeaderSize = 512;
constexpr int kLargestKeyBits = 4096;  // the maximum that fits into the header
constexpr int kSmallestKeyBits = 2048;
// OAEP with SHA-1 adds 42 bytes to a session key of 32 bytes. For a smaller key the library writes
// a header of zeros.
constexpr size_t kSmallestKeySize = 74;
constexpr size_t kLengthSize = 2;
constexpr size_t kIvSize = 12;
constexpr size_t kTagSize = 16;
constexpr size_t kSealSize = kIvSize + kTagSize;  // minimum of N
constexpr size_t kGreatestLength = 65535;         // maximum of N
// The writer formats a line in a buffer of 512 bytes, so no record is longer. Longer records are
// still read if a length leads to them; only the search for lost records uses this limit.
constexpr size_t kLongestSeal = kSealSize + 511;

inline size_t readLength(const uint8_t* bytes) {
  return static_cast<size_t>(bytes[0]) | static_cast<size_t>(bytes[1]) << 8;
}

}  // namespace orblog
