// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "StreamReader.h"

#include <errno.h>
#include <string.h>
#include <sys/socket.h>

#include <algorithm>

ssize_t StreamReader::read(void* out, size_t size) {
  auto* const bytes = static_cast<unsigned char*>(out);
  const int error = errno;
  size_t done = 0;
  for (;;) {
    const size_t taken = std::min(size - done, mEnd - mBegin);
    memcpy(bytes + done, mBytes + mBegin, taken);
    mBegin += taken;
    done += taken;
    if (done == size) return static_cast<ssize_t>(size);
    ssize_t result = 0;
    if (size - done >= kSize) {
      result = recv(mFd, bytes + done, size - done, MSG_WAITALL);
      if (result > 0) return static_cast<ssize_t>(done) + result;
    } else {
      result = recv(mFd, mBytes, kSize, 0);
      mBegin = 0;
      mEnd = result > 0 ? static_cast<size_t>(result) : 0;
    }
    if (result > 0) continue;
    if (done == 0) return result;
    // As the kernel does: gives what came before an error, and does not report the error.
    errno = error;
    return static_cast<ssize_t>(done);
  }
}
