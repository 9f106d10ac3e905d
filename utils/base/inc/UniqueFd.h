// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <errno.h>
#include <fcntl.h>
#include <unistd.h>

#include <utility>

// An application that has closed its standard streams gives their numbers to whatever is opened
// next, and what it prints must not end up there. Takes a descriptor that the library has just
// opened and returns it with a number above theirs, close-on-exec; -1, with errno, when there is
// none. A failed open passes as it is.
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
  // Gives the descriptor back to the caller, who closes it.
  int release() { return std::exchange(mFd, -1); }

 private:
  int mFd = -1;
};

// Keeps what others open away from the free numbers of standard streams for its lifetime: behind
// these descriptors is nothing that could be read or written. A number that the application has
// given to a stream of its own meanwhile is left to it.
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

// What @p open returns, above the standard streams from the beginning: while a descriptor is moved,
// another thread that prints would find it under its former number.
template <class Open>
int openAboveStandardStreams(const Open& open) {
  const StandardStreamsKeeper keeper;
  return aboveStandardStreams(open());
}
