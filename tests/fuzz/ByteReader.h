// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

// Reads an input from its beginning. After its end, bytes are zero and byte sequences are empty.
class ByteReader {
 public:
  ByteReader(const uint8_t* data, size_t size) : mData(data), mSize(size) {}

  bool empty() const { return mSize == 0; }
  uint8_t byte() {
    if (mSize == 0) return 0;
    const uint8_t value = *mData;
    skip(1);
    return value;
  }
  // The next bytes, at most so many.
  std::vector<uint8_t> bytes(size_t count) {
    const size_t size = std::min(count, mSize);
    const std::vector<uint8_t> taken(mData, mData + size);
    skip(size);
    return taken;
  }
  // The next bytes; the byte before them says how many.
  std::vector<uint8_t> block() { return bytes(byte()); }
  std::vector<uint8_t> rest() { return bytes(mSize); }

 private:
  void skip(size_t count) {
    mData += count;
    mSize -= count;
  }
  const uint8_t* mData;
  size_t mSize;
};
