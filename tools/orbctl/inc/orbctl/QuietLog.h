// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include "UniqueFd.h"

namespace orbctl {

// Keeps the log of the desktop's library, which goes to standard error, away from a program for
// people: for its lifetime what is written there is dropped, unless ORB_LOG_LEVEL says that
// somebody wants the log. The library reads that variable before the program begins, so setting it
// here is too late. Made and destroyed by the main thread, around all use of the library.
class QuietLog {
 public:
  QuietLog();
  ~QuietLog();
  // The same until the program ends: the library says goodbye after main().
  static void forGood();
  QuietLog(const QuietLog&) = delete;
  QuietLog& operator=(const QuietLog&) = delete;

 private:
  UniqueFd mStandardError;
};

}  // namespace orbctl
