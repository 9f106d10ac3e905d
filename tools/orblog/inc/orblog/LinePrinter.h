// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <cstdio>
#include <optional>
#include <string>

#include "orblog/LogLine.h"
#include "orblog/LogParser.h"

namespace orblog {

// Which lines the user wants.
struct Selection {
  int leastLevel = -1;  // by levelRank
  std::optional<Stamp> since, until;

  // A text that is no log line has no level; it is judged by the time of the line before it.
  bool takes(const std::optional<LogLine>& line, Stamp stamp) const;
};

// Writes lines as they are, or as JSON objects. Used by one thread.
class LinePrinter {
 public:
  enum class Form { Text, SafeText, Json };
  LinePrinter(FILE* out, Form form, Selection selection)
      : mOut(out), mForm(form), mSelection(selection) {}
  // Ignores the line when it is not selected.
  void print(const std::string& file, const Record& record, Stamp stamp);
  // False when the output did not take everything so far.
  bool flush();

 private:
  FILE* const mOut;
  const Form mForm;
  const Selection mSelection;
  std::string mBuffer;
};

}  // namespace orblog
