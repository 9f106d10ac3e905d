// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <sys/types.h>

#include <cstddef>

// Reads a stream socket in pieces of known length. Each read has the result of a receive that waits
// for the whole piece. But one call into the kernel takes all bytes that are there, and the reads
// that follow get them without a call. Used by the thread that reads the socket, and no other may
// receive on it; no lock.
class StreamReader {
 public:
  explicit StreamReader(int fd) : mFd(fd) {}
  StreamReader(const StreamReader&) = delete;
  StreamReader& operator=(const StreamReader&) = delete;

  // Returns what recv(fd, @p out, @p size, MSG_WAITALL) does: less than @p size if the stream ended
  // or failed, or if a signal came, within the piece; 0 at the end of the stream; -1, with errno,
  // for an error before the first byte. Otherwise errno stays as it was. @p size is not 0.
  ssize_t read(void* out, size_t size);

 private:
  // Room for dozens of frames. A piece of this size or more is received where it belongs.
  static constexpr size_t kSize = 4096;

  const int mFd;
  size_t mBegin = 0;
  size_t mEnd = 0;
  unsigned char mBytes[kSize];  // left unset: only bytes between mBegin and mEnd were received
};
