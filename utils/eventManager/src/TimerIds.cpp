// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

#include "TimerIds.h"

#include <algorithm>

void TimerIds::makeRoom(int id) {
  if (2 * mUsed + 2 <= mGroups.size()) return;
  if (mGroups.empty() || mGroups[find(numberOf(id))].number == kNoNumber) grow();
}

void TimerIds::add(int id) {
  Group& group = mGroups[find(numberOf(id))];
  if (group.number == kNoNumber) {
    group.number = numberOf(id);
    ++mUsed;
  }
  group.ids |= bitOf(id);
}

bool TimerIds::has(int id) const {
  return mUsed != 0 && (mGroups[find(numberOf(id))].ids & bitOf(id)) != 0;
}

bool TimerIds::take(int id) {
  if (mUsed == 0) return false;
  uint64_t& ids = mGroups[find(numberOf(id))].ids;
  const bool there = (ids & bitOf(id)) != 0;
  ids &= ~bitOf(id);
  return there;
}

size_t TimerIds::find(uint32_t number) const {
  const size_t mask = mGroups.size() - 1;
  // Spreads numbers whatever their distances are: those of timers that last long may have any.
  const uint32_t spread = number * 2654435769u;
  size_t at = (spread ^ spread >> 16) & mask;
  while (mGroups[at].number != number && mGroups[at].number != kNoNumber) at = (at + 1) & mask;
  return at;
}

void TimerIds::grow() {
  const auto left = static_cast<size_t>(std::count_if(
      mGroups.begin(), mGroups.end(), [](const Group& group) { return group.ids != 0; }));
  size_t size = kLeast;
  while (size < 4 * (left + 1)) size *= 2;
  std::vector<Group> groups(size, Group{kNoNumber, 0});
  groups.swap(mGroups);
  mUsed = left;
  for (const Group& group : groups) {
    if (group.ids != 0) mGroups[find(group.number)] = group;
  }
}
