// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "CappedReceive.h"

#include <dlfcn.h>
#include <sys/socket.h>

#include <cstring>

#include "IpcFrame.h"

// The program's recv comes before all others. A sanitizer that is linked into the program has one
// that looks at the buffer; one that is a library has it next in line.
extern "C" {
ssize_t __interceptor_recv(int fd, void* buffer, size_t size, int flags) __attribute__((weak));
ssize_t cappedReceive(int fd, void* buffer, size_t size, int flags) __asm__("recv");
}

static ssize_t receive(int fd, void* buffer, size_t size, int flags) {
  if (__interceptor_recv != nullptr) return __interceptor_recv(fd, buffer, size, flags);
  static const auto next = reinterpret_cast<decltype(&receive)>(dlsym(RTLD_NEXT, "recv"));
  return next(fd, buffer, size, flags);
}

// A receiver thread waits for a header and then, if that has a length, for so many bytes.
static thread_local bool payloadIsNext = false;

ssize_t cappedReceive(int fd, void* buffer, size_t size, int flags) {
  const ssize_t got = receive(fd, buffer, size, flags);
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
