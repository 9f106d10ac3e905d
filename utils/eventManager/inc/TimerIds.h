// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

// The ids of the timers that wait. They are given one after the other, so that neighbours share a
// group of 64 bits, and the table of the groups stays small enough for a cache. A plain value of
// the timer queue, on its thread; no lock.
class TimerIds {
 public:
  // Takes memory for this id, so that add() cannot fail. May throw.
  void makeRoom(int id);
  void add(int id);
  bool has(int id) const;
  // False if it was not there.
  bool take(int id);

 private:
  struct Group {
    uint32_t number;
    uint64_t ids;
  };
  static constexpr size_t kLeast = 16;
  static constexpr uint32_t kNoNumber = UINT32_MAX;

  static uint32_t numberOf(int id) { return static_cast<uint32_t>(id) / 64; }
  static uint64_t bitOf(int id) { return uint64_t{1} << (static_cast<uint32_t>(id) % 64); }
  // The group, or the empty place where it would be.
  size_t find(uint32_t number) const;
  void grow();

  std::vector<Group> mGroups;  // open addresses: a power of two or none, at most half of them used
  size_t mUsed = 0;            // also by groups without an id, which go when it grows
};
