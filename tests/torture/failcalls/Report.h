// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <atomic>
#include <chrono>
#include <cstdio>
#include <functional>
#include <string>

#include "Fault.h"

namespace failcalls {

// What a run tells the driver. It lies in memory that both share, so what was told before the
// process ended, however that was, is known. Texts are cut to their room.
struct Report {
  Probe probe;
  char phase[40];    // what the scenario was doing last
  bool finished;     // it came to its end; only the end of the process follows
  bool terminated;   // std::terminate
  Stack terminator;  // who called it
  bool logStopped;   // the log's threads were missing when nothing failed any more
  // Counted by any thread, and without a lock.
  std::atomic<unsigned> refused;  // functions that returned a failure
  std::atomic<unsigned> errors;   // status "internal error"
  std::atomic<unsigned> downs;    // status "service down" that the scenario did not bring about
  unsigned lost;                  // what was due and did not come
  unsigned late;                  // callbacks of a service whose disable had returned
  unsigned slowest;               // milliseconds of the slowest function
  char firstLost[64];             // what that was
  char firstLate[64];
  char slowestName[40];
  char broken[160];       // a rule of the lifecycle contract that did not hold
  char lines[32 * 1024];  // all kinds of lines that tell of failures, one each, numbers left out
};

template <size_t kSize>
void put(char (&room)[kSize], const std::string& text) {
  std::snprintf(room, kSize, "%s", text.c_str());
}

// One run of a scenario.
struct Run {
  Report& report;
  Fault fault;
  std::string socketPath;
  std::chrono::milliseconds patience;  // for what may not come any more once a call has failed
  // Stops the scenario's daemon, once, from any thread: the library can end the process while the
  // scenario is under way, and then nobody has joined the threads of sessions that are over.
  std::function<void()> stopDaemon;
};

}  // namespace failcalls
