// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include "SdkLog.h"

// Tag and source unit of a class's lines.
struct LogSource {
  const char* tag;
  const char* file;
};

// A fixed line of the log: log consumers know it by its function, its number and its text, so none
// of them follows the position in the source.
struct LogPoint {
  const char* function = nullptr;
  int line = 0;
  const char* text = nullptr;

  // @p values are what the text's conversions take, already of the type they name.
  template <class... Values>
  void print(const LogSource& source, Values... values) const {
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
#pragma GCC diagnostic ignored "-Wformat-security"
    SdkLog::print(3, source.tag, source.file, function, line, text, values...);
#pragma GCC diagnostic pop
  }
};
