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

  // Reads the program's arguments: --rounds N, and --brief for so few operations that the figures
  // mean nothing. Ends the process when they are wrong.
  Comparison(int argc, char** argv);

  // Prints one line for scripts/bench, of fields with tabs between them: the name, the unit, time
  // of one operation of the library and of the baseline, the ratio of the two times, its least and
  // greatest value.
  void time(const char* name, int operations, const Work& library, const Work& baseline) const;
  // The same with operations per second in place of times. The ratio is that of the times.
  void rate(const char* name, int operations, const Work& library, const Work& baseline) const;

 private:
  struct Figures {
    double library, baseline;  // seconds of one operation, median
    double ratio, low, high;   // of the times: median, least and greatest of all rounds
  };
  Figures measure(int operations, const Work& library, const Work& baseline) const;
  static void print(const char* name, const char* unit, double library, double baseline,
                    const Figures& figures);

  int mRounds = 9;
  bool mBrief = false;
};
