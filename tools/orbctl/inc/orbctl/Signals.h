// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include "UniqueFd.h"

namespace orbctl {

// Signals that end a program or tell of a terminal's new size, as something to read: nothing is
// interrupted, and the end comes in order. Made by the main thread before any other thread; the
// signals stay blocked. No lock.
class Signals {
 public:
  Signals();
  int fd() const { return mFd.get(); }
  // The next signal that came, 0 when there is none.
  int next();

 private:
  UniqueFd mFd;
};

}  // namespace orbctl
