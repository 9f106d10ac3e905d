// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include "UniqueFd.h"

namespace orbctl {

// Drops the log of the desktop's library, which goes to standard error, during the lifetime of this
// object. If ORB_LOG_LEVEL is set, the log is kept. Setting that variable here would be too late,
// because the library reads it before main(). Created and destroyed by the main thread, around all
// use of the library.
class QuietLog {
 public:
  QuietLog();
  ~QuietLog();
  // The same until the end of the program, because the library also logs after main().
  static void forGood();
  QuietLog(const QuietLog&) = delete;
  QuietLog& operator=(const QuietLog&) = delete;

 private:
  UniqueFd mStandardError;
};

}  // namespace orbctl
