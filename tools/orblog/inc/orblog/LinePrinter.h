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

// Which lines the user wants.
struct Selection {
  int leastLevel = -1;  // by levelRank
  std::optional<Stamp> since, until;
  std::vector<int64_t> pids;      // any of these, all when there is none
  std::vector<std::string> tags;  // the same
  std::shared_ptr<Pattern> grep;  // what the text has to hold

  // But for what it asks of the text.
  bool takesAll() const {
    return leastLevel < 0 && !since && !until && pids.empty() && tags.empty();
  }
  // A text that is no log line has no level, process or tag; it is judged by the stamp that its
  // neighbours give it, and taken when they give none: nothing is left out without a reason.
  bool takes(const std::optional<LogLine>& line, Stamp stamp) const;
};

// Writes lines as they are, as a terminal may have them, with or without colours, or as JSON
// objects. Used by one thread.
class LinePrinter {
 public:
  enum class Form { Text, SafeText, Colour, Json };
  // What became of texts that are no log lines.
  struct Unjudged {
    uint64_t printed = 0;
    uint64_t leftOut = 0;
  };
  LinePrinter(FILE* out, Form form, Selection selection)
      : mOut(out), mForm(form), mSelection(std::move(selection)) {}
  // Of what is printed from now on only the last lines, so many, are written, by writeKept().
  void keepLast(size_t count);
  void writeKept();
  // Ignores the line when it is not selected.
  void print(const std::string& file, const Record& record, Stamp stamp);
  // Those since the last call, by file, when there is something to select by.
  std::map<std::string, Unjudged> takeUnjudged() { return std::exchange(mUnjudged, {}); }
  // False when the output did not take everything so far.
  bool flush();
  // The output took nothing more some time ago; for the reason of this errno.
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
  std::string mBuffer;  // what is not written yet
  int mError = 0;
  std::map<std::string, Unjudged> mUnjudged;
  std::optional<size_t> mMostKept;  // while lines are kept
  std::vector<Kept> mKept;          // a ring when it is full
  size_t mOldest = 0;               // of the ring
};

}  // namespace orblog
