// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "orblog/LogLine.h"
#include "orblog/LogParser.h"

namespace orblog {

// The stamps of the records of one file, in their order, as far as they must be known before any
// of them is printed. A text without a stamp takes that of the one before it. The first ones take
// `former`, that of the last line which the file had before these; when there was none, the first
// that follows.
class RecordTimes {
 public:
  explicit RecordTimes(Stamp former = kNoStamp) : mLead(former), mLast(former) {}
  // Records that follow those so far.
  void add(const std::vector<Record>& records);
  // Nobody knows how many follow.
  void leaveOpen() { mIsOpen = true; }
  bool isOpen() const { return mIsOpen; }
  uint64_t count() const { return mIsOpen ? UINT64_MAX : mCount; }
  Stamp lead() const { return mLead; }  // of texts before the first line
  Stamp first() const { return mFirst != kNoStamp ? mFirst : mLead; }
  Stamp last() const { return mLast != kNoStamp ? mLast : mLead; }

 private:
  uint64_t mCount = 0;
  bool mIsOpen = false;
  Stamp mLead;
  Stamp mFirst = kNoStamp;  // of the first record, if that is a line
  Stamp mLast;
};

// Gives the next few records of a file each time; none when there are no more.
using RecordLoader = std::function<std::vector<Record>()>;

// The records of one file, a few of them in memory at a time. Used by one thread.
class RecordStream {
 public:
  // When the file was changed last, in nanoseconds.
  RecordStream(std::string file, int64_t changed, const RecordTimes& times, RecordLoader load)
      : mFile(std::move(file)),
        mChanged(changed),
        mTimes(times),
        mLoad(std::move(load)),
        mLeft(times.count()),
        mStamp(times.first()) {}

  const std::string& file() const { return mFile; }
  int64_t changed() const { return mChanged; }
  const RecordTimes& times() const { return mTimes; }
  bool atEnd() const { return mLeft == 0; }
  // That of the next record; for the first one nothing is read.
  Stamp stamp() const { return mStamp; }
  // The next record, until it is passed over. Null when it is not there any more; that is the end.
  const Record* record();
  void pass();
  // Records that were counted could not be had.
  uint64_t missing() const { return mMissing; }

 private:
  void end();
  std::string mFile;
  int64_t mChanged;
  RecordTimes mTimes;
  RecordLoader mLoad;  // until the end
  uint64_t mLeft;
  uint64_t mMissing = 0;
  Stamp mStamp;
  std::vector<Record> mRecords;
  size_t mNext = 0;  // of these
};

using RecordStreams = std::vector<RecordStream>;

// Puts them into the order in which their files were written, as far as it can be told: by the
// first line, then the last, then the time of the last change, then the name. A process fills
// its files one after another, so where one ends and the next begins within the same millisecond
// the first lines tell the order, whatever the numbers in the names are and however the files came
// here.
void sortByAge(RecordStreams& streams);

// Calls `use` for all records, least stamp first; equal ones in the order of the streams. Records
// of one stream keep their order even where its clock was set back. Ends before the record at which
// `isOver` says so.
void mergeByTime(RecordStreams& streams,
                 const std::function<void(const std::string& file, const Record&, Stamp)>& use,
                 const std::function<bool()>& isOver = {});

}  // namespace orblog
