// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#ifndef ORB_TESTS_QUIET_THREADS_H_
#define ORB_TESTS_QUIET_THREADS_H_

#include <sched.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <map>
#include <optional>
#include <string>

namespace quiet {

// The number of context switches of each other thread; nothing if a thread does not sleep.
inline std::optional<std::map<std::string, std::string>> sleepingThreads() {
  std::map<std::string, std::string> switches;
  const std::string self = std::to_string(syscall(SYS_gettid));
  std::error_code error;
  for (const auto& task : std::filesystem::directory_iterator("/proc/self/task", error)) {
    const std::string thread = task.path().filename();
    if (thread == self) continue;
    std::ifstream status(task.path() / "status");
    bool asleep = false;
    for (std::string line; std::getline(status, line);) {
      if (line.rfind("State:", 0) == 0) asleep = line.find("\tS") != std::string::npos;
      if (line.find("voluntary_ctxt_switches:") != std::string::npos) switches[thread] += line;
    }
    if (!asleep) return std::nullopt;
  }
  return switches;
}

// Waits until all other threads sleep: each sleeps when seen twice, and has not run in between. If
// a process forks earlier, a lock of another thread may stay locked in the child. The C library's
// allocator prevents that for its own locks, the allocator of a sanitizer does not.
inline void awaitThreads() {
  for (auto before = sleepingThreads();; sched_yield()) {
    auto now = sleepingThreads();
    if (now && before == now) return;
    before = std::move(now);
  }
}

}  // namespace quiet

#endif  // ORB_TESTS_QUIET_THREADS_H_
