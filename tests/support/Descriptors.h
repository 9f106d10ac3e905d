// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <fcntl.h>

#include <cstddef>

#include "ProcessState.h"
#include "QuietThreads.h"

// The descriptors of this process. When a sanitizer meets a type for the first time, it checks it
// through a pipe, which takes free numbers for a moment. So with a sanitizer, the descriptors are
// compared when the other threads sleep; without one, at once.

inline bool isOpen(int fd) { return fcntl(fd, F_GETFD) != -1; }

inline bool isClosed(int fd) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
  if (isOpen(fd)) quiet::awaitThreads();
#endif
  return !isOpen(fd);
}

inline size_t openDescriptors() {
  quiet::awaitThreads();
  return processstate::descriptors();
}
