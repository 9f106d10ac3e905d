// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include "UniqueFd.h"

namespace orbctl {

// Makes signals readable: those that end a program and those that report a new size of the
// terminal. So no call is interrupted, and the program ends in an orderly way. Created by the main
// thread before any other thread; the signals stay blocked. No lock.
class Signals {
 public:
  Signals();
  int fd() const { return mFd.get(); }
  // The next received signal, or 0.
  int next();

 private:
  UniqueFd mFd;
};

}  // namespace orbctl
