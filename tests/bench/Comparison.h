// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <functional>

// Compares the library with a bare baseline in one process: both do the same number of operations,
// by turns, so that what else the machine is doing hits both alike. The median of all rounds
// counts. Used on the main thread.
class Comparison {
 public:
  // Does that many operations; returns when the last one is complete.
  using Work = std::function<void(int operations)>;

  // Reads the program's arguments: --rounds N. Ends the process when they are wrong.
  Comparison(int argc, char** argv);

  // Prints one line: time of one operation of either, and the ratio of the two.
  void time(const char* name, int operations, const Work& library, const Work& baseline) const;
  // The same as operations per second.
  void rate(const char* name, int operations, const Work& library, const Work& baseline) const;

 private:
  struct Figures {
    double library, baseline;  // seconds of one operation, median
    double ratio, low, high;   // of the times: median, least and greatest of all rounds
  };
  Figures measure(int operations, const Work& library, const Work& baseline) const;

  int mRounds = 9;
};
