// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

#pragma once

namespace orbsim {

// An eventfd that ends a poll() in another thread. Different threads may call wake() and drain() at
// the same time. The owner must call close() when no other call runs.
class WakeFd {
 public:
  WakeFd();
  ~WakeFd() { close(); }
  WakeFd(const WakeFd&) = delete;
  WakeFd& operator=(const WakeFd&) = delete;

  int fd() const { return mFd; }  // -1 when it could not be made or is closed
  void wake();
  void drain();
  void close();

 private:
  int mFd;
};

}  // namespace orbsim
