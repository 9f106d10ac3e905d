// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "CappedReceive.h"

#include <dlfcn.h>
#include <sys/socket.h>

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <memory>
#include <vector>

#include "IpcFrame.h"
#include "ProcessUtils.h"

// The process uses the program's recv. A sanitizer that is linked into the program has a recv that
// checks the buffer. If the sanitizer is a library, its recv is the next definition.
extern "C" {
ssize_t __interceptor_recv(int fd, void* buffer, size_t size, int flags) __attribute__((weak));
ssize_t cappedReceive(int fd, void* buffer, size_t size, int flags) __asm__("recv");
}

static ssize_t receive(int fd, void* buffer, size_t size, int flags) {
  if (__interceptor_recv != nullptr) return __interceptor_recv(fd, buffer, size, flags);
  static const auto next = reinterpret_cast<decltype(&receive)>(dlsym(RTLD_NEXT, "recv"));
  return next(fd, buffer, size, flags);
}

namespace {

constexpr size_t kLengthAt = offsetof(ipcMsg_t, payloadLength);
constexpr size_t kLengthSize = sizeof(ipcMsg_t) - kLengthAt;

// The position of a receiver in its stream of frames.
class FrameStream {
 public:
  // Lowers the lengths in the next @p size bytes. A length is incomplete only at the stream's end.
  void lowerLengths(unsigned char* bytes, size_t size) {
    while (size > 0) {
      const size_t taken = mPayloadToCome > 0 ? skip(size) : header(bytes, size);
      bytes += taken;
      size -= taken;
    }
  }
  // How many bytes are missing of the length in which the next @p size bytes end.
  size_t missing(const unsigned char* bytes, size_t size) const {
    FrameStream ahead = *this;
    std::vector<unsigned char> copy(bytes, bytes + size);
    ahead.lowerLengths(copy.data(), size);
    return ahead.mHave > kLengthAt ? sizeof(ipcMsg_t) - ahead.mHave : 0;
  }

 private:
  size_t skip(size_t size) {
    const size_t taken = static_cast<size_t>(std::min<uint64_t>(size, mPayloadToCome));
    mPayloadToCome -= taken;
    return taken;
  }
  size_t header(unsigned char* bytes, size_t size) {
    const size_t taken = std::min(size, sizeof(ipcMsg_t) - mHave);
    mHave += taken;
    if (mHave <= kLengthAt) return taken;
    // The missing bytes of an incomplete length are zero.
    uint64_t length = 0;
    const size_t known = mHave - kLengthAt;
    std::memcpy(&length, bytes + taken - known, known);
    length = std::min(length, kLargestPayload);
    std::memcpy(bytes + taken - known, &length, known);
    if (mHave < sizeof(ipcMsg_t)) return taken;
    mHave = 0;
    mPayloadToCome = length;
    return taken;
  }

  size_t mHave = 0;  // bytes of the current header
  uint64_t mPayloadToCome = 0;
};

// A thread may run one receiver after the other.
FrameStream& streamOf(const std::shared_ptr<Semaphore>& receiver) {
  static thread_local std::weak_ptr<Semaphore> present;
  static thread_local FrameStream stream;
  if (present.lock() != receiver) stream = FrameStream();
  present = receiver;
  return stream;
}

}  // namespace

// Only receiver threads read frames.
ssize_t cappedReceive(int fd, void* buffer, size_t size, int flags) {
  const auto receiver = semaphoreOfThisReceiver();
  if (!receiver) return receive(fd, buffer, size, flags);
  FrameStream& stream = streamOf(receiver);
  const bool whole = (flags & MSG_WAITALL) != 0;  // the rest of a long payload, without lengths
  ssize_t got = receive(fd, buffer, whole ? size : size - kLengthSize, flags);
  if (got <= 0) return got;
  auto* const bytes = static_cast<unsigned char*>(buffer);
  const size_t missing = stream.missing(bytes, static_cast<size_t>(got));
  if (missing > 0) {
    const ssize_t rest = receive(fd, bytes + got, missing, MSG_WAITALL);
    if (rest > 0) got += rest;
  }
  stream.lowerLengths(bytes, static_cast<size_t>(got));
  return got;
}
