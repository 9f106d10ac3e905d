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

// The stamps of the records of one file, in order, as far as they must be known before records are
// printed. A record without a stamp gets the stamp of the record before it. The first records get
// `former`, the stamp of the last earlier line of the file; if there is none, the next stamp.
class RecordTimes {
 public:
  explicit RecordTimes(Stamp former = kNoStamp) : mLead(former), mLast(former) {}
  // Adds following records.
  void add(const std::vector<Record>& records);
  // The number of following records is not known.
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
  Stamp mFirst = kNoStamp;  // of the first record, if it is a log line
  Stamp mLast;
};

// Returns the next few records of a file; none at the end.
using RecordLoader = std::function<std::vector<Record>()>;

// The records of one file; only a few are in memory at a time. Used by one thread.
class RecordStream {
 public:
  // The time of the last change of the file in nanoseconds.
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
  // The stamp of the next record. The first stamp is known without reading.
  Stamp stamp() const { return mStamp; }
  // The next record, until it is skipped. Null if it no longer exists; that is the end.
  const Record* record();
  void pass();
  // Whether counted records could not be read.
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
  size_t mNext = 0;  // index in the records
};

using RecordStreams = std::vector<RecordStream>;

// Sorts streams by the order in which their files were written, as far as known: by the first line,
// then the last line, then the time of the last change, then the name. A process fills its files
// one after another. So if one file ends and the next begins within the same millisecond, the first
// lines show the order. The numbers in the file names do not matter.
void sortByAge(RecordStreams& streams);

// Calls `use` for all records in the order of their stamps. Records with equal stamps keep the
// order of the streams. Records of one stream keep their order, even if its clock was set back.
// Ends before the record for which `isOver` is true.
void mergeByTime(RecordStreams& streams,
                 const std::function<void(const std::string& file, const Record&, Stamp)>& use,
                 const std::function<bool()>& isOver = {});

}  // namespace orblog
