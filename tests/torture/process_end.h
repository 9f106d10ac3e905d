// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstdint>
#include <cstring>

#include "Recorder.h"

#ifdef __SANITIZE_THREAD__
// Instead of a whole second for other threads at every end.
extern "C" __attribute__((used)) inline const char* __tsan_default_options() {
  return "atexit_sleep_ms=20";
}
#endif

// What the two programs that end in every possible way have in common.
namespace process_end {

// Every ordinary end has this exit status.
constexpr int kExpected = 7;
// Nothing takes longer; then the alarm's signal ends the process and tells that it hung.
constexpr unsigned kAlarmSeconds = 60;
// That many callbacks are traffic.
constexpr size_t kTraffic = 30;

// Counts callbacks, of whatever kind.
using Traffic = Recorder<int, Keep::Counts>;
inline void awaitTraffic() { Traffic::get().waitForMore({}, kTraffic, Traffic::kWatched); }

inline bool isConnection(int fd) {
  sockaddr_un peer = {};
  socklen_t length = sizeof(peer);
  return getpeername(fd, reinterpret_cast<sockaddr*>(&peer), &length) == 0 &&
         strcmp(peer.sun_path, "/dev/socket/orb") == 0;
}
// What the death of the daemon looks like from here.
inline void breakConnections() {
  for (int fd = 3; fd < 256; ++fd) {
    if (isConnection(fd)) shutdown(fd, SHUT_RDWR);
  }
}

}  // namespace process_end
