// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <cstdint>
#include <cstdio>
#include <map>
#include <optional>
#include <string>
#include <utility>

#include "orblog/LogLine.h"
#include "orblog/LogParser.h"

namespace orblog {

// Which lines the user wants.
struct Selection {
  int leastLevel = -1;  // by levelRank
  std::optional<Stamp> since, until;

  bool takesAll() const { return leastLevel < 0 && !since && !until; }
  // A text that is no log line has no level; it is judged by the stamp that its neighbours give it,
  // and taken when they give none: nothing is left out without a reason.
  bool takes(const std::optional<LogLine>& line, Stamp stamp) const;
};

// Writes lines as they are, or as JSON objects. Used by one thread.
class LinePrinter {
 public:
  enum class Form { Text, SafeText, Json };
  // What became of texts that are no log lines.
  struct Unjudged {
    uint64_t printed = 0;
    uint64_t leftOut = 0;
  };
  LinePrinter(FILE* out, Form form, Selection selection)
      : mOut(out), mForm(form), mSelection(selection) {}
  // Ignores the line when it is not selected.
  void print(const std::string& file, const Record& record, Stamp stamp);
  // Those since the last call, by file, when there is something to select by.
  std::map<std::string, Unjudged> takeUnjudged() { return std::exchange(mUnjudged, {}); }
  // False when the output did not take everything so far.
  bool flush();

 private:
  FILE* const mOut;
  const Form mForm;
  const Selection mSelection;
  std::string mBuffer;
  std::map<std::string, Unjudged> mUnjudged;
};

}  // namespace orblog
