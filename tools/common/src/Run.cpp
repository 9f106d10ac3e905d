// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "orbtool/Run.h"

#include <poll.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <exception>
#include <new>

namespace orbtool {
namespace {

bool isTold = false;  // whether the tool has reported that output failed; main thread only

int fail(const char* name, const char* reason) {
  std::fprintf(stderr, "%s: %s\n", name, reason);
  return kExitFailed;
}

int runGuarded(const char* name, const std::function<int()>& body) {
  try {
    return body();
  } catch (const std::bad_alloc&) {
    return fail(name, "out of memory");
  } catch (const std::exception& error) {
    return fail(name, error.what());
  }
}

// After an earlier write error, errno is lost; so this checks whether the reader is gone.
bool isReaderGone() {
  pollfd output = {STDOUT_FILENO, POLLOUT, 0};
  return ::poll(&output, 1, 0) == 1 && (output.revents & (POLLERR | POLLHUP | POLLNVAL)) != 0;
}

}  // namespace

int runTool(const char* name, const std::function<int()>& body) {
  const int status = runGuarded(name, body);
  errno = 0;
  const bool failedBefore = std::ferror(stdout) != 0;
  const bool written = std::fflush(stdout) == 0 && !failedBefore;
  // An application with a closed standard output is not an error.
  if (written || isTold || errno == EBADF || errno == EPIPE || (errno == 0 && isReaderGone())) {
    return status;
  }
  std::fprintf(stderr, "%s: standard output: %s\n", name,
               errno != 0 ? std::strerror(errno) : "write error");
  return status == kExitDone ? kExitFailed : status;
}

void outputFailureIsTold() { isTold = true; }

}  // namespace orbtool
