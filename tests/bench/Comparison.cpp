// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "Comparison.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>

namespace {

constexpr int kMaxRounds = 1000;

double secondsOfOne(const Comparison::Work& work, int operations) {
  const auto start = std::chrono::steady_clock::now();
  work(operations);
  const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - start;
  return elapsed.count() / operations;
}

double median(std::vector<double> values) {
  std::sort(values.begin(), values.end());
  return values[values.size() / 2];
}

}  // namespace

Comparison::Comparison(int argc, char** argv) {
  if (argc == 1) return;
  char* end = nullptr;
  const long rounds = argc == 3 ? std::strtol(argv[2], &end, 10) : 0;
  const bool valid = end != nullptr && *end == '\0' && rounds >= 1 && rounds <= kMaxRounds;
  if (!valid || std::strcmp(argv[1], "--rounds") != 0) {
    std::fprintf(stderr, "Usage: %s [--rounds N]   N is 1 to %d\n", argv[0], kMaxRounds);
    std::exit(2);
  }
  mRounds = static_cast<int>(rounds);
}

Comparison::Figures Comparison::measure(int operations, const Work& library,
                                        const Work& baseline) const {
  const int warmUp = std::max(1, operations / 10);
  library(warmUp);
  baseline(warmUp);
  std::vector<double> libraryTimes, baselineTimes, ratios;
  for (int round = 0; round < mRounds; ++round) {
    libraryTimes.push_back(secondsOfOne(library, operations));
    baselineTimes.push_back(secondsOfOne(baseline, operations));
    ratios.push_back(libraryTimes.back() / baselineTimes.back());
  }
  const auto [low, high] = std::minmax_element(ratios.begin(), ratios.end());
  return {median(libraryTimes), median(baselineTimes), median(ratios), *low, *high};
}

void Comparison::time(const char* name, int operations, const Work& library,
                      const Work& baseline) const {
  const Figures figures = measure(operations, library, baseline);
  std::printf("%-40s %9.3f us %9.3f us %6.2f  (%.2f to %.2f)\n", name, figures.library * 1e6,
              figures.baseline * 1e6, figures.ratio, figures.low, figures.high);
  std::fflush(stdout);
}

void Comparison::rate(const char* name, int operations, const Work& library,
                      const Work& baseline) const {
  const Figures figures = measure(operations, library, baseline);
  std::printf("%-40s %9.0f /s %9.0f /s %6.2f  (%.2f to %.2f)\n", name, 1 / figures.library,
              1 / figures.baseline, figures.ratio, figures.low, figures.high);
  std::fflush(stdout);
}
