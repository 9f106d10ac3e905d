// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <map>
#include <string>
#include <tuple>
#include <vector>

#include "Runner.h"

namespace failcalls {

struct Settings {
  std::string scenario;  // empty: all
  std::string call;      // empty: all
  std::string fault;     // a single fault, as Fault::text() writes it
  size_t sample = 0;     // about so many points of each scenario; 0: all
  unsigned sideBySide = 2;
  bool words = false;  // print the lines of the runs
};

// Makes each call of a scenario fail and prints a table, and each result that is not as documented.
class Campaign {
 public:
  explicit Campaign(const Settings& settings) : mSettings(settings) {}

  // False if there was a finding, or if nothing could be tried.
  bool run();

  size_t points() const { return mPoints; }
  size_t findings() const { return mFindings; }

 private:
  struct Row {
    unsigned reached = 0;  // the highest number of a call
    unsigned points = 0;
    unsigned outcomes[kOutcomes] = {};
  };

  bool runScenario(const Scenario& scenario);
  std::vector<Fault> planOf(const Scenario& scenario, const Baseline& baseline) const;
  std::vector<Fault> sampleOf(const std::vector<std::vector<Fault>>& groups) const;
  void take(const Scenario& scenario, const Result& result);
  void printFinding(const Scenario& scenario, const Result& result) const;
  void printTable(const Scenario& scenario) const;

  const Settings mSettings;
  std::map<std::pair<Call, std::string>, Row> mRows;  // of the current scenario
  std::map<std::string, unsigned> mWords;
  std::map<uintptr_t, unsigned> mSites;
  std::map<std::tuple<Outcome, Call, uintptr_t>, unsigned> mKinds;  // of findings
  size_t mPoints = 0;
  size_t mFindings = 0;
  size_t mLogStopped = 0;
  unsigned mSlowest = 0;
  std::string mSlowestName;
};

}  // namespace failcalls
