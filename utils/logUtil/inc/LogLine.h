// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <cerrno>
#include <cstdarg>
#include <cstddef>
#include <string_view>

#include "LogHead.h"

// The source that all lines of the log itself are shown under, whichever file they come from.
constexpr char kLogSource[] = "utils/logUtil/src/Log.cpp";

// One line in the shape of all log lines, "|tag|File::function:line text", built on the stack: the
// head by copying, the text too if it has only the usual conversions, else by one vsnprintf. Used
// on one thread, within one log call. What does not fit into 511 characters is cut off without a
// mark.
class LogLine {
 public:
  static constexpr size_t kBufferSize = 512;

  LogLine(const LogHead& head, const char* format, va_list args)
      __attribute__((format(printf, 3, 0)));
  // Throws std::logic_error for a null file, as making a string of it would.
  LogLine(const char* tag, const char* file, const char* function, int line, const char* format,
          va_list args) __attribute__((format(printf, 6, 0)));
  // A line whose text is ready as it is.
  LogLine(const char* tag, const char* file, const char* function, int line, std::string_view text);
  LogLine(const LogLine&) = delete;
  LogLine& operator=(const LogLine&) = delete;

  const char* text() const { return mText; }
  std::string_view view() const { return {mText, mSize}; }

  // For a line that serves as a format: when it was cut behind the first '%' of a pair, that one
  // goes too. A line that was not cut stays as it is.
  void dropSplitPercent();

 private:
  void appendHead(const char* tag, const char* file, const char* function, int line);
  void appendText(const char* format, va_list args) __attribute__((format(printf, 2, 0)));
  // The same for %d, %u, %x, %ld, %lu, %lx, %s and %%, which nearly all lines make do with. False
  // if there is something else; the line is of no use then.
  bool appendSimple(const char* format, va_list args) __attribute__((format(printf, 2, 0)));
  template <class Number>
  void appendNumber(Number number, int base = 10);
  void append(std::string_view part);

  char mText[kBufferSize];
  size_t mSize = 0;
  bool mCut = false;
};

// Gives errno its value back at the end of the scope: whoever logs a failed call still wants its
// error.
class ErrnoKeeper {
 public:
  ErrnoKeeper() = default;
  ErrnoKeeper(const ErrnoKeeper&) = delete;
  ErrnoKeeper& operator=(const ErrnoKeeper&) = delete;
  ~ErrnoKeeper() { errno = mErrno; }

 private:
  const int mErrno = errno;
};
