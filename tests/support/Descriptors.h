// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <fcntl.h>

#include <cstddef>

#include "ProcessState.h"
#include "QuietThreads.h"

// The descriptors of this process. A sanitizer looks at a type that is new to it through a pipe, on
// whatever thread meets the type, and so takes free numbers for a moment: with one, what is to be
// gone is judged when the other threads have gone to sleep. Without, it must be gone at once.

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
