// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "CappedReceive.h"

#include <sys/socket.h>

#include <cstring>

#include "IpcFrame.h"

// The linker sends the library's calls of recv here (--wrap=recv).
extern "C" {
ssize_t __real_recv(int fd, void* buffer, size_t size, int flags);
ssize_t __wrap_recv(int fd, void* buffer, size_t size, int flags);
}

// A receiver thread waits for a header and then, if that has a length, for so many bytes.
static thread_local bool payloadIsNext = false;

ssize_t __wrap_recv(int fd, void* buffer, size_t size, int flags) {
  const ssize_t got = __real_recv(fd, buffer, size, flags);
  if ((flags & MSG_WAITALL) == 0) return got;
  if (payloadIsNext) {
    payloadIsNext = false;
  } else if (got > 0) {
    ipcMsg_t header;  // one that is cut short is zero behind the cut
    std::memcpy(&header, buffer, sizeof header);
    if (header.payloadLength > kLargestPayload) header.payloadLength = kLargestPayload;
    std::memcpy(buffer, &header, sizeof header);
    payloadIsNext = header.payloadLength != 0;
  }
  return got;
}
