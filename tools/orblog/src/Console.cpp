// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "orblog/Console.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cinttypes>
#include <cstdio>

#include "orblog/Text.h"

namespace orblog {
namespace {

constexpr uint64_t kToldPerFile = 20;
constexpr uint64_t kLargeInput = uint64_t{4} << 20;
constexpr char kEraseLine[] = "\r\033[K";

}  // namespace

Console::Console() : mIsTerminal(isatty(STDERR_FILENO) == 1) {}

void Console::print(const std::string& text) {
  if (mTotal != 0) std::fputs(kEraseLine, stderr);
  std::fprintf(stderr, "orblog: %s\n", terminalSafe(text).c_str());
}

void Console::problem(const std::string& text) {
  mHadProblem = true;
  print(text);
}

void Console::report(const std::string& file, const std::vector<Finding>& findings) {
  for (const Finding& finding : findings) {
    if (finding.isProblem()) mHadProblem = true;
    if (mTold[file]++ < kToldPerFile) print(file + ": " + finding.text());
  }
}

void Console::reportUntold() {
  for (const auto& [file, count] : mTold) {
    if (count > kToldPerFile)
      print(file + ": and " + std::to_string(count - kToldPerFile) + " more places like these");
  }
  mTold.clear();
}

// The output may go through a pipe to a pager.
bool Console::mayGoOnBesideLines() const {
  struct stat status = {};
  return fstat(STDOUT_FILENO, &status) == 0 && isatty(STDOUT_FILENO) == 0 &&
         (S_ISREG(status.st_mode) || S_ISCHR(status.st_mode));
}

void Console::startProgress(uint64_t total) {
  mTotal = mIsTerminal && total >= kLargeInput ? total : 0;
  mDone = 0;
  mShown = UINT64_MAX;
}

void Console::advance(uint64_t bytes) {
  if (mTotal == 0) return;
  mDone += bytes;
  const uint64_t percent = std::min<uint64_t>(100, mDone * 100 / mTotal);
  if (percent == mShown) return;
  mShown = percent;
  std::fprintf(stderr, "\rorblog: reading, %3" PRIu64 " %% of %" PRIu64 " MB", percent,
               mTotal >> 20);
}

void Console::endProgress() {
  if (mTotal != 0) std::fputs(kEraseLine, stderr);
  mTotal = 0;
}

}  // namespace orblog
