// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <list>
#include <string_view>

#include "LogLine.h"
#include "LogRecord.h"
#include "Mutex.h"

// Records that wait, in the order in which they came: packed one behind the other into blocks, as
// they are many, short and dropped in the same order. Any thread pushes and pops; the owner keeps
// the queue alive until all of them are done. mMutex guards the blocks and is held for one record
// at a time; the size is read without it.
class RecordQueue {
 public:
  // The text of a record as it is in the queue; no record shows more of it.
  using Text = std::array<char, LogLine::kBufferSize>;

  RecordQueue() = default;
  RecordQueue(const RecordQueue&) = delete;
  RecordQueue& operator=(const RecordQueue&) = delete;

  // Throws std::bad_alloc, and the record is not in the queue.
  void push(const RecordStamp& stamp, std::string_view message);
  // Takes the oldest one; false when there is none. @p message is in @p text.
  bool tryPop(RecordStamp& stamp, Text& text, std::string_view& message);
  // How many there are, or were a moment ago.
  size_t size() const { return mSize.load(std::memory_order_relaxed); }

 private:
  struct Head {
    RecordStamp stamp;
    size_t size;
  };
  struct Block {
    Block() {}  // leaves the room as it is
    size_t used = 0;
    char room[8000];
  };

  Mutex mMutex;
  std::list<Block> mBlocks ORB_GUARDED_BY(mMutex);  // none of them is empty
  size_t mTaken ORB_GUARDED_BY(mMutex) = 0;         // of the first block
  std::atomic<size_t> mSize{0};
};
