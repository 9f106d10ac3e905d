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

// From here on, and in threads that start later, SIGINT, SIGTERM and SIGHUP wait for waitForEnd().
// A reader of the output that goes away does not take the program with it.
void holdSignals();
// Until one of them comes. The next one ends the program at once.
void waitForEnd();

// What is printed on a stream, one line for each thing: text, or JSON Lines. Any thread may print
// and none waits for the reader: a thread of its own writes, started by the first line, so after
// holdSignals(). Of what a reader leaves lying for long, the newest is dropped and counted. The
// sinks must not be used any more when the owner finishes or destroys it, which writes what is
// left. `mLock` guards all but the form and the stream; it is not held while a line is written.
class Output {
 public:
  explicit Output(bool json, std::FILE* stream = stdout) : mJson(json), mStream(stream) {}
  ~Output() { finish(); }
  Output(const Output&) = delete;
  Output& operator=(const Output&) = delete;

  std::function<void(const std::string&)> log();
  TraceSink trace();
  // The first error of writing, 0 when there was none. A reader that goes away is none.
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
  uint64_t mDropped = 0;  // not told yet
  bool mEnding = false;
  int mError = 0;  // the writing thread's, and the owner's after its end
  std::thread mThread;
};

}  // namespace orbsim
