// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

#include <cstddef>
#include <vector>

#include "QuietThreads.h"

// While it exists, the process can open only @p room more descriptors. First it waits until other
// threads sleep, because a sanitizer that has no descriptor to check a type takes it for a wrong
// one.
class FewDescriptors {
 public:
  explicit FewDescriptors(size_t room) {
    quiet::awaitThreads();
    getrlimit(RLIMIT_NOFILE, &mBefore);
    rlimit low = mBefore;
    low.rlim_cur = 256;
    setrlimit(RLIMIT_NOFILE, &low);
    for (int fd = 0; (fd = open("/dev/null", O_RDONLY | O_CLOEXEC)) >= 0;) mTaken.push_back(fd);
    for (size_t i = 0; i < room && !mTaken.empty(); ++i) giveOne();
  }
  FewDescriptors(const FewDescriptors&) = delete;
  FewDescriptors& operator=(const FewDescriptors&) = delete;
  ~FewDescriptors() {
    while (!mTaken.empty()) giveOne();
    setrlimit(RLIMIT_NOFILE, &mBefore);
  }

 private:
  void giveOne() {
    close(mTaken.back());
    mTaken.pop_back();
  }
  rlimit mBefore{};
  std::vector<int> mTaken;
};
