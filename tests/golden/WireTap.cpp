// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "WireTap.h"

#include <sys/socket.h>
#include <sys/un.h>

#include <chrono>
#include <mutex>

#include "Interposed.h"
#include "Recorder.h"

namespace {

std::mutex sending;  // so that pieces are in the order of sending
using Tap = Recorder<wiretap::Piece>;

bool hasName(int fd) {
  sockaddr_un address = {};
  socklen_t size = sizeof address;
  return getsockname(fd, reinterpret_cast<sockaddr*>(&address), &size) == 0 &&
         size > offsetof(sockaddr_un, sun_path) && address.sun_path[0] != '\0';
}

}  // namespace

extern "C" ssize_t send(int fd, const void* data, size_t size, int flags) {
  const std::lock_guard<std::mutex> lock(sending);
  const ssize_t sent = ORB_NEXT(send)(fd, data, size, flags);
  if (sent > 0) {
    const auto* const bytes = static_cast<const uint8_t*>(data);
    Tap::get().add({hasName(fd), {bytes, bytes + sent}});
  }
  return sent;
}

namespace wiretap {

void clear() { Tap::get().clear(); }

std::vector<Piece> take(size_t count) {
  Tap::get().waitForCount(count, std::chrono::minutes(1));
  return Tap::get().take();
}

}  // namespace wiretap
