// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "orblog/LogLine.h"
#include "orblog/LogParser.h"
#include "orblog/Pattern.h"

namespace orblog {

// The selection of lines.
struct Selection {
  int leastLevel = -1;  // by levelRank
  std::optional<Stamp> since, until;
  std::vector<int64_t> pids;      // any of these; empty: all
  std::vector<std::string> tags;  // any of these; empty: all
  std::shared_ptr<Pattern> grep;  // must match the text

  // Everything except grep.
  bool takesAll() const {
    return leastLevel < 0 && !since && !until && pids.empty() && tags.empty();
  }
  // For a record that is not a log line and has no level, process or tag. Its time is that of a
  // neighbouring line. Without a neighbouring line it is selected.
  bool takes(const std::optional<LogLine>& line, Stamp stamp) const;
};

// Writes lines: unchanged, safe for a terminal, with or without colours, or as JSON objects. Used
// by one thread.
class LinePrinter {
 public:
  enum class Form { Text, SafeText, Colour, Json };
  // Counts of records that are not log lines.
  struct Unjudged {
    uint64_t printed = 0;
    uint64_t leftOut = 0;
  };
  LinePrinter(FILE* out, Form form, Selection selection)
      : mOut(out), mForm(form), mSelection(std::move(selection)) {}
  // From now on, keeps only the last `count` lines until writeKept() writes them.
  void keepLast(size_t count);
  void writeKept();
  // Does nothing if the line is not selected.
  void print(const std::string& file, const Record& record, Stamp stamp);
  // The counts since the last call, by file, if there is a selection.
  std::map<std::string, Unjudged> takeUnjudged() { return std::exchange(mUnjudged, {}); }
  // False if the output has failed.
  bool flush();
  // Records that the output failed earlier, with this errno.
  bool hasFailed() const { return mError != 0; }
  int error() const { return mError; }

 private:
  struct Kept {
    std::string file;
    Record record;
  };
  void write(const std::string& file, const Record& record, const std::optional<LogLine>& line);
  void keep(const std::string& file, const Record& record);
  bool needsLine() const;
  void put();
  FILE* const mOut;
  const Form mForm;
  const Selection mSelection;
  std::string mBuffer;  // not yet written
  int mError = 0;
  std::map<std::string, Unjudged> mUnjudged;
  std::optional<size_t> mMostKept;  // set while lines are kept
  std::vector<Kept> mKept;          // a ring buffer when it is full
  size_t mOldest = 0;               // of the ring buffer
};

}  // namespace orblog
