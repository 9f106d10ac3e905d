// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <errno.h>
#include <fcntl.h>
#include <unistd.h>

#include <utility>

// If an application has closed its standard streams, the next open gets one of their numbers, and
// the application would print into it. This function takes a descriptor that the library has just
// opened and returns it with a higher number, close-on-exec; -1, with errno, if there is none. A
// failed open is returned unchanged.
inline int aboveStandardStreams(int fd) {
  if (fd < 0 || fd > STDERR_FILENO) return fd;
  const int moved = fcntl(fd, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
  const int error = errno;
  ::close(fd);
  errno = error;
  return moved;
}

// Owns one descriptor and closes it once. 0 is a descriptor like any other; -1 stands for none.
class UniqueFd {
 public:
  UniqueFd() = default;
  explicit UniqueFd(int fd) : mFd(fd) {}
  UniqueFd(const UniqueFd&) = delete;
  UniqueFd& operator=(const UniqueFd&) = delete;
  UniqueFd(UniqueFd&& other) noexcept : mFd(other.release()) {}
  UniqueFd& operator=(UniqueFd&& other) noexcept {
    reset(other.release());
    return *this;
  }
  ~UniqueFd() { reset(); }
  int get() const { return mFd; }
  // Closes the descriptor and owns the other one instead.
  void reset(int fd = -1) {
    const int former = std::exchange(mFd, fd);
    if (former >= 0) ::close(former);
  }
  // Releases the descriptor to the caller, who closes it.
  int release() { return std::exchange(mFd, -1); }

 private:
  int mFd = -1;
};

// While it exists, other opens do not get the free numbers of the standard streams: it occupies
// them with descriptors that can be neither read nor written. If the application uses one of the
// numbers meanwhile, that one stays with the application.
class StandardStreamsKeeper {
 public:
  StandardStreamsKeeper() {
    for (UniqueFd& kept : mKept) {
      kept.reset(open("/", O_PATH | O_CLOEXEC));
      if (kept.get() < 0 || kept.get() > STDERR_FILENO) break;
    }
    for (UniqueFd& kept : mKept) {
      if (kept.get() > STDERR_FILENO) kept.reset();  // all are taken
    }
  }
  StandardStreamsKeeper(const StandardStreamsKeeper&) = delete;
  StandardStreamsKeeper& operator=(const StandardStreamsKeeper&) = delete;
  ~StandardStreamsKeeper() {
    for (UniqueFd& kept : mKept) {
      if (kept.get() >= 0 && (fcntl(kept.get(), F_GETFL) & O_PATH) == 0) kept.release();
    }
  }

 private:
  UniqueFd mKept[STDERR_FILENO + 1];
};

// Calls @p open so that the descriptor is above the standard streams from the beginning. If it were
// moved afterwards, another thread could print into it before the move.
template <class Open>
int openAboveStandardStreams(const Open& open) {
  const StandardStreamsKeeper keeper;
  return aboveStandardStreams(open());
}
