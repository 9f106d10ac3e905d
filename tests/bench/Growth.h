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
// goes through all sizes, at each one the library and then its floor, so that what else the machine
// is doing hits all of them alike; the least of all rounds counts. Costs are processor time of the
// whole process, so time that other programs take does not count. Used on the main thread.
class Growth {
 public:
  using Sizes = std::vector<size_t>;
  // What one operation costs at that size, in nanoseconds.
  using Cost = std::function<double(size_t size)>;

  // Reads the program's arguments; ends the process when they are wrong.
  Growth(int argc, char** argv);

  // Measures a curve, if it was asked for, and prints "NAME,SIZE,LIBRARY,FLOOR" for each size. In a
  // brief run the sizes above @p brief are left out. Without a @p floor its column stays empty.
  void curve(const std::string& name, size_t brief, const Sizes& sizes, const Cost& library,
             const Cost& floor) const;
  bool isWanted(const std::string& name) const;
  // How many operations a measurement takes that would take @p usual; few in a brief run.
  size_t operations(size_t usual) const;

  static double processorNanoseconds() {
    timespec time = {};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) * 1e9 + static_cast<double>(time.tv_nsec);
  }
  // Of one operation, when @p work does so many.
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
