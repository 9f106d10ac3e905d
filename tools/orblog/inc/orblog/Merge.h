// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "orblog/LogLine.h"
#include "orblog/LogParser.h"

namespace orblog {

// Records of one file in its order.
struct Batch {
  std::string file;
  int64_t changed = 0;  // when the file was changed last, in nanoseconds
  std::vector<Record> records;
  std::vector<Stamp> stamps;  // per record; filled by setStamps

  // A text without a stamp takes that of the one before it. The first ones take `former`, that of
  // the last line which the file had before these; when there was none, the first that follows.
  void setStamps(Stamp former = kNoStamp);
};

// Puts the batches into the order in which their files were written, as far as it can be told: by
// the first line, then the last, then the time of the last change, then the name. A process fills
// its files one after another, so where one ends and the next begins within the same millisecond
// the first lines tell the order, whatever the numbers in the names are and however the files came
// here.
void sortByAge(std::vector<Batch>& batches);

// Calls `use` for all records, least stamp first; equal ones in the order of the batches. Records
// of one batch keep their order even where its clock was set back.
void mergeByTime(const std::vector<Batch>& batches,
                 const std::function<void(const Batch&, size_t record)>& use);

}  // namespace orblog
