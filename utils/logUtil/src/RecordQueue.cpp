// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "RecordQueue.h"

#include <algorithm>
#include <cstring>
#include <type_traits>

#include "Bytes.h"

void RecordQueue::push(const RecordStamp& stamp, std::string_view message) {
  static_assert(std::is_trivially_copyable_v<Head>, "is copied byte by byte");
  static_assert(sizeof(Head) + sizeof(Text) <= sizeof(Block::room), "a block takes every record");
  const Head head{stamp, std::min(message.size(), sizeof(Text))};
  const LockGuard lock(mMutex);
  if (mBlocks.empty() || sizeof(Block::room) - mBlocks.back().used < sizeof head + head.size) {
    mBlocks.emplace_back();
  }
  Block& block = mBlocks.back();
  std::memcpy(block.room + block.used, &head, sizeof head);
  copyBytes(block.room + block.used + sizeof head, message.data(), head.size);
  block.used += sizeof head + head.size;
  mSize.store(mSize.load(std::memory_order_relaxed) + 1, std::memory_order_relaxed);
}

bool RecordQueue::tryPop(RecordStamp& stamp, Text& text, std::string_view& message) {
  std::list<Block> done;  // freed without the lock
  const LockGuard lock(mMutex);
  if (mBlocks.empty()) return false;
  const Block& block = mBlocks.front();
  Head head;
  std::memcpy(&head, block.room + mTaken, sizeof head);
  copyBytes(text.data(), block.room + mTaken + sizeof head, head.size);
  stamp = head.stamp;
  message = {text.data(), head.size};
  mTaken += sizeof head + head.size;
  if (mTaken == block.used) {
    done.splice(done.begin(), mBlocks, mBlocks.begin());
    mTaken = 0;
  }
  mSize.store(mSize.load(std::memory_order_relaxed) - 1, std::memory_order_relaxed);
  return true;
}
