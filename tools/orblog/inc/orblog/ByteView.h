// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <cstddef>
#include <cstdint>

namespace orblog {

// Bytes that another object owns.
struct ByteView {
  const uint8_t* data = nullptr;
  size_t size = 0;

  ByteView() = default;
  ByteView(const uint8_t* first, size_t count) : data(first), size(count) {}
  // The view without its first `start` bytes; empty if it is shorter.
  ByteView from(size_t start) const {
    return start < size ? ByteView(data + start, size - start) : ByteView();
  }
  ByteView first(size_t count) const { return {data, count < size ? count : size}; }
};

}  // namespace orblog
