// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <sys/types.h>

#include <cstddef>

// Reads a stream socket in pieces of known length. Each read has the result of a receive that waits
// for the whole piece, but one call into the kernel takes all that is there, for the pieces that
// follow. Belongs to the thread that reads the socket; no lock. Nobody else may receive on it.
class StreamReader {
 public:
  explicit StreamReader(int fd) : mFd(fd) {}
  StreamReader(const StreamReader&) = delete;
  StreamReader& operator=(const StreamReader&) = delete;

  // As recv(fd, @p out, @p size, MSG_WAITALL): less than @p size when the stream ended, failed or a
  // signal came within the piece, 0 at its end and -1, with errno, for an error before the first
  // byte. errno is left alone otherwise. @p size is not 0.
  ssize_t read(void* out, size_t size);

 private:
  // For dozens of frames; a piece that is no smaller does not pass through it.
  static constexpr size_t kSize = 4096;

  const int mFd;
  size_t mBegin = 0;
  size_t mEnd = 0;
  unsigned char mBytes[kSize];  // left unset: what is between the two has been received
};
