// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

#include "orbsim/WakeFd.h"

#include <sys/eventfd.h>
#include <unistd.h>

#include <cstdint>

namespace orbsim {

WakeFd::WakeFd() : mFd(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {}

void WakeFd::close() {
  if (mFd >= 0) ::close(mFd);
  mFd = -1;
}

void WakeFd::wake() {
  const uint64_t one = 1;
  // It fails only if the counter is at its maximum, and then the poller wakes up anyway.
  (void)!::write(mFd, &one, sizeof(one));
}

void WakeFd::drain() {
  uint64_t count = 0;
  (void)!::read(mFd, &count, sizeof(count));
}

}  // namespace orbsim
