// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <functional>

// Compares the library with a bare baseline in one process. Both do the same number of operations,
// in turn, so that other load on the machine affects both. The result is the median of all rounds.
// Used on the main thread.
class Comparison {
 public:
  // Does so many operations; returns when the last one is complete.
  using Work = std::function<void(int operations)>;

  // Reads the program's arguments: --rounds N, and --brief for few operations, whose figures mean
  // nothing. Ends the process if they are wrong.
  Comparison(int argc, char** argv);

  // Prints one line for scripts/bench. Its fields have tabs between them: the name, the unit, the
  // time of one operation of the library and of the baseline, the ratio of the two times, the least
  // and the greatest ratio.
  void time(const char* name, int operations, const Work& library, const Work& baseline) const;
  // The same with operations per second in place of times. The ratio is still that of the times.
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
