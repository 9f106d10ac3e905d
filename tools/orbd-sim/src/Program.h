// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

#pragma once

#include <functional>
#include <string>

#include "orbsim/Trace.h"

namespace orbsim {

// From here on, and in threads that start later, SIGINT and SIGTERM wait for waitForEnd(). A reader
// of the output that goes away does not take the program with it.
void holdSignals();
// Until one of the two comes.
void waitForEnd();

// What is printed on standard output, one line for each thing: text, or JSON Lines. Any thread may
// print; a line is written in one piece.
class Output {
 public:
  explicit Output(bool json) : mJson(json) {}

  std::function<void(const std::string&)> log() const;
  TraceSink trace() const;

 private:
  const bool mJson;
};

}  // namespace orbsim
