// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <cstdint>

#include "ServiceFixture.h"

// Frames and parts of messages as bytes, made without the library and without protobuf.
namespace servicetest {

inline void appendWord(Blob& bytes, uint64_t word) {
  for (int shift = 0; shift < 64; shift += 8) bytes.push_back(static_cast<uint8_t>(word >> shift));
}

// A whole frame that contains a blob of the service.
template <class S>
Blob frameBytes(uint64_t session, const Blob& blob) {
  Blob bytes;
  for (const uint64_t word : {uint64_t{S::kEndpoint}, uint64_t{1}, uint64_t{5}, uint64_t{0},
                              session, uint64_t{4 + blob.size()}}) {
    appendWord(bytes, word);
  }
  bytes.insert(bytes.end(), {S::kSdkType, 0, 0, 0});
  bytes.insert(bytes.end(), blob.begin(), blob.end());
  return bytes;
}

inline Blob varint(uint64_t value) {
  Blob bytes;
  for (; value >= 0x80; value >>= 7) bytes.push_back(static_cast<uint8_t>(value | 0x80));
  bytes.push_back(static_cast<uint8_t>(value));
  return bytes;
}

inline Blob operator+(Blob a, const Blob& b) {
  a.insert(a.end(), b.begin(), b.end());
  return a;
}

inline Blob delimited(uint8_t key, const Blob& content) {
  return Blob{key} + varint(content.size()) + content;
}

// The same for every service.
inline const Blob kEnable{0x1a, 0x04, 0x0a, 0x02, 0x08, 0x01};
inline const Blob kDisable{0x1a, 0x02, 0x0a, 0x00};
inline const Blob kGetLast{0x08, 0x03, 0x1a, 0x02, 0x1a, 0x00};

}  // namespace servicetest
