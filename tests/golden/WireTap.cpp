// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "WireTap.h"

#include <dlfcn.h>
#include <sys/socket.h>
#include <sys/un.h>

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <utility>

namespace {

struct Tap {
  std::mutex lock;  // also held while sending: pieces stand in the order in which they went out
  std::condition_variable changed;
  std::vector<wiretap::Piece> pieces;
};

Tap& tap() {
  static Tap* const instance = new Tap;  // threads may still send while the process exits
  return *instance;
}

bool hasName(int fd) {
  sockaddr_un address = {};
  socklen_t size = sizeof address;
  return getsockname(fd, reinterpret_cast<sockaddr*>(&address), &size) == 0 &&
         size > offsetof(sockaddr_un, sun_path) && address.sun_path[0] != '\0';
}

}  // namespace

extern "C" ssize_t send(int fd, const void* data, size_t size, int flags) {
  static const auto next =
      reinterpret_cast<ssize_t (*)(int, const void*, size_t, int)>(dlsym(RTLD_NEXT, "send"));
  const std::lock_guard<std::mutex> lock(tap().lock);
  const ssize_t sent = next(fd, data, size, flags);
  if (sent > 0) {
    const auto* const bytes = static_cast<const uint8_t*>(data);
    tap().pieces.push_back({hasName(fd), {bytes, bytes + sent}});
    tap().changed.notify_all();
  }
  return sent;
}

namespace wiretap {

void clear() {
  const std::lock_guard<std::mutex> lock(tap().lock);
  tap().pieces.clear();
}

std::vector<Piece> take(size_t count) {
  std::unique_lock<std::mutex> lock(tap().lock);
  tap().changed.wait_until(lock, std::chrono::system_clock::now() + std::chrono::seconds(60),
                           [count] { return tap().pieces.size() >= count; });
  return std::exchange(tap().pieces, {});
}

}  // namespace wiretap
