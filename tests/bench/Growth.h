// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <time.h>

#include <algorithm>
#include <cstddef>
#include <functional>
#include <string>
#include <vector>

// Measures how the cost of one operation grows with a size, for scripts/bench-growth. Each round
// measures all sizes, at each size first the library and then its floor, so that other load on the
// machine affects all of them. The result is the least cost of all rounds. A cost is processor time
// of the whole process, so the time of other programs does not count. Used on the main thread.
class Growth {
 public:
  using Sizes = std::vector<size_t>;
  // The cost of one operation at that size, in nanoseconds.
  using Cost = std::function<double(size_t size)>;

  // Reads the program's arguments; ends the process if they are wrong.
  Growth(int argc, char** argv);

  // Measures a curve, if the arguments select it, and prints "NAME,SIZE,LIBRARY,FLOOR" for each
  // size. A brief run leaves out the sizes above @p brief. Without a @p floor its column is empty.
  void curve(const std::string& name, size_t brief, const Sizes& sizes, const Cost& library,
             const Cost& floor) const;
  bool isWanted(const std::string& name) const;
  // The number of operations of a measurement: @p usual, or few in a brief run.
  size_t operations(size_t usual) const;

  static double processorNanoseconds() {
    timespec time = {};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) * 1e9 + static_cast<double>(time.tv_nsec);
  }
  // The cost of one operation if @p work does so many.
  template <class Work>
  static double costOfOne(size_t operations, Work&& work) {
    const double start = processorNanoseconds();
    work();
    return (processorNanoseconds() - start) / static_cast<double>(operations);
  }

 private:
  int mRounds = 7;
  bool mBrief = false;
  std::vector<std::string> mNames;  // all if empty
};
