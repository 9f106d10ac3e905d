// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "orblog/Merge.h"

#include <algorithm>
#include <queue>
#include <string_view>
#include <tuple>
#include <utility>

namespace orblog {
namespace {

Stamp stampOf(const Record& record) {
  const std::optional<LogLine> line = parseLine(record.text);
  return line ? line->stamp : kNoStamp;
}

}  // namespace

// Lines in between are not needed.
void RecordTimes::add(const std::vector<Record>& records) {
  if (records.empty()) return;
  if (mCount == 0) mFirst = stampOf(records.front());
  mCount += records.size();
  auto first = records.begin();
  while (mLead == kNoStamp && first != records.end()) mLead = stampOf(*first++);
  Stamp last = kNoStamp;
  for (auto it = records.rbegin(); last == kNoStamp && it != records.rend(); ++it)
    last = stampOf(*it);
  if (last != kNoStamp) mLast = last;
}

const Record* RecordStream::record() {
  if (mLeft == 0) return nullptr;
  if (mNext == mRecords.size()) {
    mNext = 0;
    mRecords = mLoad();
    if (mRecords.empty()) {
      mMissing = mTimes.isOpen() ? 0 : mLeft;
      end();
      return nullptr;
    }
  }
  return &mRecords[mNext];
}

void RecordStream::pass() {
  ++mNext;
  if (--mLeft == 0) return end();
  const Record* const next = record();
  const Stamp stamp = next == nullptr ? kNoStamp : stampOf(*next);
  if (stamp != kNoStamp) mStamp = stamp;
}

void RecordStream::end() {
  mLeft = 0;
  std::vector<Record>().swap(mRecords);
  mLoad = nullptr;
}

void sortByAge(RecordStreams& streams) {
  const auto age = [](const RecordStream& stream) {
    const RecordTimes& times = stream.times();
    const bool none = times.count() == 0;
    return std::make_tuple(none ? 0 : times.first(), none ? 0 : times.last(), stream.changed(),
                           std::string_view(stream.file()));
  };
  std::stable_sort(streams.begin(), streams.end(),
                   [&age](const auto& a, const auto& b) { return age(a) < age(b); });
}

void mergeByTime(RecordStreams& streams,
                 const std::function<void(const std::string& file, const Record&, Stamp)>& use,
                 const std::function<bool()>& isOver) {
  using Head = std::pair<Stamp, size_t>;  // stamp and index of the stream
  std::priority_queue<Head, std::vector<Head>, std::greater<>> heads;
  for (size_t i = 0; i < streams.size(); ++i) {
    if (!streams[i].atEnd()) heads.emplace(streams[i].stamp(), i);
  }
  while (!heads.empty() && !(isOver && isOver())) {
    const size_t number = heads.top().second;
    heads.pop();
    RecordStream& stream = streams[number];
    const Record* const record = stream.record();
    if (record == nullptr) continue;
    use(stream.file(), *record, stream.stamp());
    stream.pass();
    if (!stream.atEnd()) heads.emplace(stream.stamp(), number);
  }
}

}  // namespace orblog
