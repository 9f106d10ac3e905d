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
// By default TSan waits a whole second for other threads at each exit.
extern "C" __attribute__((used)) inline const char* __tsan_default_options() {
  return "atexit_sleep_ms=20";
}
#endif

// What process_end and process_dlclose share.
namespace process_end {

// The exit status of each run that ends as it should.
constexpr int kExpected = 7;
// No run takes longer. After this the alarm's signal ends a process that hangs.
constexpr unsigned kAlarmSeconds = 60;
// With this number of callbacks, traffic is under way.
constexpr size_t kTraffic = 30;

// Counts callbacks of all kinds.
using Traffic = Recorder<int, Keep::Counts>;
inline void awaitTraffic() { Traffic::get().waitForMore({}, kTraffic, Traffic::kWatched); }

inline bool isConnection(int fd) {
  sockaddr_un peer = {};
  socklen_t length = sizeof(peer);
  return getpeername(fd, reinterpret_cast<sockaddr*>(&peer), &length) == 0 &&
         strcmp(peer.sun_path, "/dev/socket/orb") == 0;
}
// The same as when the daemon dies, as the application sees it.
inline void breakConnections() {
  for (int fd = 3; fd < 256; ++fd) {
    if (isConnection(fd)) shutdown(fd, SHUT_RDWR);
  }
}

}  // namespace process_end
