// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "Growth.h"

#include <CLI/CLI.hpp>
#include <cstdio>
#include <cstdlib>
#include <limits>

namespace {

constexpr size_t kBriefOperations = 20;
constexpr double kNone = std::numeric_limits<double>::infinity();

}  // namespace

Growth::Growth(int argc, char** argv) {
  CLI::App app("Print as CSV how costs grow with sizes, in nanoseconds. For scripts/bench-growth.");
  app.add_option("CURVE", mNames, "Measure these only.");
  app.add_option("--rounds", mRounds, "The least of so many rounds counts.")
      ->capture_default_str()
      ->check(CLI::Range(1, 1000));
  app.add_flag("--brief", mBrief,
               "The smallest sizes and few operations: costs mean nothing then.");
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    std::exit(app.exit(error) == 0 ? EXIT_SUCCESS : 2);
  }
  if (mBrief) mRounds = 1;
}

bool Growth::isWanted(const std::string& name) const {
  return mNames.empty() || std::find(mNames.begin(), mNames.end(), name) != mNames.end();
}

size_t Growth::operations(size_t usual) const {
  return mBrief ? std::min(usual, kBriefOperations) : usual;
}

void Growth::curve(const std::string& name, size_t brief, const Sizes& sizes, const Cost& library,
                   const Cost& floor) const {
  if (!isWanted(name)) return;
  std::vector<double> libraryCosts(sizes.size(), kNone), floorCosts(sizes.size(), kNone);
  for (int round = 0; round < mRounds; ++round) {
    for (size_t i = 0; i < sizes.size(); ++i) {
      if (mBrief && sizes[i] > brief) break;
      libraryCosts[i] = std::min(libraryCosts[i], library(sizes[i]));
      if (floor) floorCosts[i] = std::min(floorCosts[i], floor(sizes[i]));
    }
  }
  for (size_t i = 0; i < sizes.size() && libraryCosts[i] != kNone; ++i) {
    std::printf("%s,%zu,%.1f,", name.c_str(), sizes[i], libraryCosts[i]);
    std::printf(floor ? "%.1f\n" : "\n", floorCosts[i]);
  }
  std::fflush(stdout);
}
