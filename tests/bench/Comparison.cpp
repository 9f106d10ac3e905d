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
constexpr int kBriefOperations = 100;

bool parseRounds(const char* text, int& rounds) {
  char* end = nullptr;
  const long value = std::strtol(text, &end, 10);
  if (end == text || *end != '\0' || value < 1 || value > kMaxRounds) return false;
  rounds = static_cast<int>(value);
  return true;
}

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
  for (int i = 1; i < argc; ++i) {
    if (std::strcmp(argv[i], "--brief") == 0) {
      mBrief = true;
    } else if (std::strcmp(argv[i], "--rounds") != 0 || ++i == argc ||
               !parseRounds(argv[i], mRounds)) {
      std::fprintf(stderr, "Usage: %s [--rounds N] [--brief]   N is 1 to %d\n", argv[0],
                   kMaxRounds);
      std::exit(2);
    }
  }
}

Comparison::Figures Comparison::measure(int operations, const Work& library,
                                        const Work& baseline) const {
  if (mBrief) operations = std::min(operations, kBriefOperations);
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
  print(name, "us", figures.library * 1e6, figures.baseline * 1e6, figures);
}

void Comparison::rate(const char* name, int operations, const Work& library,
                      const Work& baseline) const {
  const Figures figures = measure(operations, library, baseline);
  print(name, "/s", 1 / figures.library, 1 / figures.baseline, figures);
}

void Comparison::print(const char* name, const char* unit, double library, double baseline,
                       const Figures& figures) {
  std::printf("%s\t%s\t%.6g\t%.6g\t%.4g\t%.4g\t%.4g\n", name, unit, library, baseline,
              figures.ratio, figures.low, figures.high);
  std::fflush(stdout);
}
