// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "orbctl/QuietLog.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdlib>

namespace orbctl {

namespace {

bool isWanted() { return std::getenv("ORB_LOG_LEVEL") != nullptr; }

void drop() {
  const UniqueFd null(open("/dev/null", O_WRONLY | O_CLOEXEC));
  if (null.get() >= 0) (void)dup2(null.get(), STDERR_FILENO);
}

}  // namespace

QuietLog::QuietLog() {
  if (isWanted()) return;
  mStandardError.reset(fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1));
  if (mStandardError.get() >= 0) drop();
}

void QuietLog::forGood() {
  if (!isWanted()) drop();
}

QuietLog::~QuietLog() {
  if (mStandardError.get() >= 0) (void)dup2(mStandardError.get(), STDERR_FILENO);
}

}  // namespace orbctl
