// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "orblog/Finding.h"

namespace orblog {

// Messages for the user on standard error: problems, and the progress of a long read. Remembers
// whether there was a problem, which decides the exit status.
class Console {
 public:
  Console();
  // One line of information that is not a problem.
  void note(const std::string& text) { print(text); }
  // One line about data that could not be read.
  void problem(const std::string& text);
  // Findings of a file. After a limit per file they are only counted.
  void report(const std::string& file, const std::vector<Finding>& findings);
  // Prints how many were only counted.
  void reportUntold();
  bool hadProblem() const { return mHadProblem; }

  // Shows the progress on a terminal for inputs that take long. If the same terminal also shows
  // lines, the progress must end before the first line.
  bool mayGoOnBesideLines() const;
  void startProgress(uint64_t total);
  void advance(uint64_t bytes);
  void endProgress();

 private:
  void print(const std::string& text);
  const bool mIsTerminal;
  bool mHadProblem = false;
  std::map<std::string, uint64_t> mTold;
  uint64_t mTotal = 0;  // 0 if no progress is shown
  uint64_t mDone = 0;
  uint64_t mShown = 0;
};

}  // namespace orblog
