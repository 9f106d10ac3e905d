// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <dirent.h>
#include <sched.h>

#include <cstddef>
#include <fstream>
#include <string>

#include "ProcessUtils.h"

// What the process has at the moment and the library must have given back.
namespace processstate {

inline size_t descriptors() {
  size_t count = 0;
  DIR* const directory = opendir("/proc/self/fd");
  while (directory != nullptr && readdir(directory) != nullptr) ++count;
  if (directory != nullptr) closedir(directory);
  return count;
}

// The library's threads but for the two of the log, which stay until the process ends.
inline size_t libraryThreads() {
  size_t count = 0;
  DIR* const directory = opendir("/proc/self/task");
  if (directory == nullptr) return 0;
  while (const dirent* const entry = readdir(directory)) {
    std::ifstream file("/proc/self/task/" + std::string(entry->d_name) + "/comm");
    std::string name;
    std::getline(file, name);
    if (name.compare(0, 4, "orb-") == 0 && name.compare(0, 8, "orb-log-") != 0) ++count;
  }
  closedir(directory);
  return count;
}

inline bool socketsRegistered() {
  const auto globals = getProcessUtilsGlobals();
  const ScopedLock lock(globals->mLock);
  return !globals->mSockets.empty() || !globals->mReceiverThreads.empty();
}

// A thread that has done its last step stands in the process's list for a moment, and nothing
// signals the end of that. The watchdog ends a wait in vain.
template <class Condition>
void awaitState(const Condition& condition) {
  while (!condition()) sched_yield();
}

// No more than there were before. A thread of the checkers may have one open at any moment.
inline void awaitDescriptors(size_t before) {
  awaitState([&] { return descriptors() <= before; });
}

}  // namespace processstate
