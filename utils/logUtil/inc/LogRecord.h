// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <sys/time.h>

#include <cstddef>
#include <string>
#include <string_view>

#include "LogLine.h"

// What a line leaves behind beside its text until both are written out: who wrote it when. A plain
// value of whoever holds it.
struct RecordStamp {
  long tid = 0;
  int pid = 0;
  timeval time{};
  int level = 0;
  bool dmap = false;  // a line of the data path

  // Here and now.
  void stamp(int recordLevel, bool isDmap = false);
  // The record of this text as one line of at most 511 characters; empty when its time has no
  // calendar form. Its size.
  size_t formatEntry(std::string_view text, char (&entry)[LogLine::kBufferSize]) const;
};

// A whole record, which keeps its text.
struct LogRecord : RecordStamp {
  std::string message;

  void init(int recordLevel, const std::string& text);
  std::string getDiagEntry() const;
};

// Has localtime_r() know the present time zone. It may miss that the system's file was replaced, so
// tzset() is called then, and only then: it reads the environment, which the application may be
// changing on another thread. After a change of TZ it is for the application to call it.
void followTimeZone();
