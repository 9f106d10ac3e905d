// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

// Takes an input apart from its front. What is no longer there reads as zero or is empty.
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
  // At most so many bytes.
  std::vector<uint8_t> bytes(size_t count) {
    const size_t size = std::min(count, mSize);
    const std::vector<uint8_t> taken(mData, mData + size);
    skip(size);
    return taken;
  }
  // As many bytes as the byte in front of them says.
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
