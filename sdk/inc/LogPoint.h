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
// follows the position in the source.
struct LogPoint {
  const char* function = nullptr;
  int line = 0;
  const char* text = nullptr;

  // @p values are the arguments for the conversions of the text, of exactly their types.
  template <class... Values>
  void print(const LogSource& source, Values... values) const {
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
#pragma GCC diagnostic ignored "-Wformat-security"
    SdkLog::print(3, source.tag, source.file, function, line, text, values...);
#pragma GCC diagnostic pop
  }
};
