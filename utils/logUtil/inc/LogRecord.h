// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <sys/time.h>

#include <cstddef>
#include <string>
#include <string_view>

#include "LogLine.h"

// What a line leaves behind until it is written out: its text, and who wrote it when. A plain value
// of whoever holds it. Its text is also made without keeping the message: the first two functions
// are those of a record that is queued, the other two of one that goes out at once.
struct LogRecord {
  std::string message;
  long tid = 0;
  int pid = 0;
  timeval time{};
  int level = 0;
  bool dmap = false;  // a line of the data path

  void init(int recordLevel, const std::string& text);
  // The record as one line of at most 511 characters; empty when its time has no calendar form.
  std::string getDiagEntry() const;

  // The parts of the two above: all but the message, and the line of a message kept elsewhere.
  void stamp(int recordLevel, bool isDmap = false);
  size_t formatEntry(std::string_view text, char (&entry)[LogLine::kBufferSize]) const;
};

// Has localtime_r() know the present time zone. It may miss that the system's file was replaced, so
// tzset() is called then, and only then: it reads the environment, which the application may be
// changing on another thread. After a change of TZ it is for the application to call it.
void followTimeZone();
