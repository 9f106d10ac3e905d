// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include "SdkLog.h"

// Tag and source unit of a class's lines.
struct LogSource {
  const char* tag;
  const char* file;
};

// A fixed line of the log. Log consumers recognise it by function, number and text, so none of them
// follows the position in the source. A constant: the compiler puts its head together.
struct LogPoint {
  constexpr LogPoint() = default;
  constexpr LogPoint(const LogSource& source, const char* ofFunction, int line,
                     const char* withText)
      : function(ofFunction), text(withText), head(source.tag, source.file, ofFunction, line) {}

  // @p values are the arguments for the conversions of the text, of exactly their types.
  template <class... Values>
  void print(Values... values) const {
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
#pragma GCC diagnostic ignored "-Wformat-security"
    SdkLog::print(head, text, values...);
#pragma GCC diagnostic pop
  }

  const char* function = nullptr;
  const char* text = nullptr;
  LogHead head;
};
