// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <orb/sdl.h>

#include <cstdint>
#include <cstring>
#include <iterator>
#include <utility>
#include <vector>

#include "Check.h"
#include "Recorder.h"

// A call of one of the application's callbacks with its arguments.
struct Call {
  const char* callback;
  std::vector<uint64_t> values;

  bool operator==(const Call& other) const {
    return std::strcmp(callback, other.callback) == 0 && values == other.values;
  }
};
using Calls = std::vector<Call>;

// The same type for signed and unsigned values, so that their lists can be compared.
template <class... Values>
Call callOf(const char* callback, Values... values) {
  return {callback, {static_cast<uint64_t>(static_cast<int64_t>(values))...}};
}

// The calls so far. All come on the thread that delivers the blob.
inline void called(Call call) { Recorder<Call>::get().add(std::move(call)); }
inline Calls takeCalls() { return Recorder<Call>::get().take(); }

inline void onStatus(status_e status) { called(callOf("status", status)); }
inline void onStatusV2(status_v2_e status) { called(callOf("v2", status)); }

// The calls for the status of a message: first the callback of the first generation, then that of
// the second, each with its own number. A message's status is 0 to 9; all others count as invalid.
inline void expectStatus(int status, Calls& expected) {
  constexpr int kFirst[] = {-1, 0, 1, 2, 3, 4, 5, 6, 7, 8};
  constexpr int kSecond[] = {-1, 0, -2, -3, -4, -5, -7, -8, -1, -6};
  const bool known = status >= 0 && static_cast<size_t>(status) < std::size(kFirst);
  expected.push_back(callOf("status", known ? kFirst[status] : STATUS_INVALID));
  expected.push_back(callOf("v2", known ? kSecond[status] : STATUS_V2_INVALID));
}
