// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

#pragma once

#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <deque>
#include <functional>
#include <mutex>
#include <string>
#include <thread>

#include "orbsim/Trace.h"

namespace orbsim {

// Blocks SIGINT, SIGTERM and SIGHUP for this thread and later threads; waitForEnd() receives them.
// Also ignores SIGPIPE, so that the program continues if the reader of the output exits.
void holdSignals();
// Waits for one of these signals. The next one ends the program at once.
void waitForEnd();

// Prints lines on a stream: text or JSON Lines. Any thread may print, and no thread waits for the
// reader: a separate thread writes. The first line starts it, so print after holdSignals(). If the
// reader is too slow, the newest lines are dropped and counted. finish() and the destructor write
// the remaining lines; the sinks must not be used after that. `mLock` guards everything except the
// format and the stream; it is not held while a line is written.
class Output {
 public:
  explicit Output(bool json, std::FILE* stream = stdout) : mJson(json), mStream(stream) {}
  ~Output() { finish(); }
  Output(const Output&) = delete;
  Output& operator=(const Output&) = delete;

  std::function<void(const std::string&)> log();
  TraceSink trace();
  // The first write error, or 0. An exited reader is not an error.
  int finish();

 private:
  std::string logLine(const std::string& text) const;
  void print(std::string line);
  void write();
  bool writeLine(const std::string& line);

  const bool mJson;
  std::FILE* const mStream;
  std::mutex mLock;
  std::condition_variable mChanged;
  std::deque<std::string> mLines;
  size_t mBytes = 0;      // of the lines
  uint64_t mDropped = 0;  // not reported yet
  bool mEnding = false;
  int mError = 0;  // used by the writing thread, and by the owner after its end
  std::thread mThread;
};

}  // namespace orbsim
