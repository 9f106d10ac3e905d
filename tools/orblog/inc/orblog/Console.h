// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "orblog/Finding.h"

namespace orblog {

// What the user is told on standard error: problems, and how far a long read is. Remembers whether
// there was a problem, which decides the exit status.
class Console {
 public:
  Console();
  // One line that only explains something.
  void note(const std::string& text) { print(text); }
  // One line; something could not be read.
  void problem(const std::string& text);
  // Some findings of a file; more than a screenful per file are only counted.
  void report(const std::string& file, const std::vector<Finding>& findings);
  // Says how many were only counted.
  void reportUntold();
  bool hadProblem() const { return mHadProblem; }

  // Shown on a terminal, for inputs that take a while. Where that terminal may show the lines, too,
  // it has to end before them.
  bool mayGoOnBesideLines() const;
  void startProgress(uint64_t total);
  void advance(uint64_t bytes);
  void endProgress();

 private:
  void print(const std::string& text);
  const bool mIsTerminal;
  bool mHadProblem = false;
  std::map<std::string, uint64_t> mTold;
  uint64_t mTotal = 0;  // 0 when no progress is shown
  uint64_t mDone = 0;
  uint64_t mShown = 0;
};

}  // namespace orblog
