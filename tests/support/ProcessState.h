// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <dirent.h>
#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <fstream>
#include <string>
#include <vector>

#include "ComesTo.h"

// Descriptors, threads and memory of this process now, as the kernel lists them.
namespace processstate {

constexpr char kDescriptors[] = "/proc/self/fd";
constexpr char kThreads[] = "/proc/self/task";

// The names in a directory, sorted.
inline std::vector<std::string> entriesOf(const char* path) {
  std::vector<std::string> names;
  DIR* const directory = opendir(path);
  if (directory == nullptr) return names;
  while (const dirent* const entry = readdir(directory)) {
    if (entry->d_name[0] != '.') names.emplace_back(entry->d_name);
  }
  closedir(directory);
  std::sort(names.begin(), names.end());
  return names;
}

inline size_t descriptors() { return entriesOf(kDescriptors).size() - 1; }  // one is the list's own
inline size_t threads() { return entriesOf(kThreads).size(); }

// The names of all threads. A new thread has the name of its creator until it sets its own.
inline std::vector<std::string> threadNames() {
  std::vector<std::string> names;
  for (const std::string& thread : entriesOf(kThreads)) {
    std::ifstream file(kThreads + ("/" + thread) + "/comm");
    std::string name;
    if (std::getline(file, name)) names.push_back(name);
  }
  return names;
}
inline bool startsWith(const std::string& name, const std::string& start) {
  return name.compare(0, start.size(), start) == 0;
}
inline size_t threadsNamed(const std::string& start) {
  const auto names = threadNames();
  return static_cast<size_t>(std::count_if(
      names.begin(), names.end(), [&](const auto& name) { return startsWith(name, start); }));
}

// The library's worker, receivers and closer. The threads of its log stay until the process ends.
inline size_t libraryThreads() {
  const auto names = threadNames();
  return static_cast<size_t>(std::count_if(names.begin(), names.end(), [](const auto& name) {
    return startsWith(name, "orb-") && !startsWith(name, "orb-log-") && name != "orb-diag";
  }));
}
inline bool libraryThreadsEnd() {
  return comesTo([] { return libraryThreads() == 0; });
}

// The numbers of descriptors and threads, to compare with later ones.
struct Census {
  size_t descriptors = processstate::descriptors();
  size_t threads = processstate::threads();
};
inline bool comesBackTo(const Census& before) {
  return comesTo([&] {
    const Census now;
    return now.descriptors <= before.descriptors && now.threads <= before.threads;
  });
}

// Descriptors alone, for programs whose other threads come and go.
inline bool descriptorsComeBackTo(size_t before) {
  return comesTo([&] { return descriptors() <= before; });
}

// Resident memory in bytes.
inline size_t residentBytes() {
  std::ifstream file("/proc/self/statm");
  size_t pages = 0;
  size_t resident = 0;
  file >> pages >> resident;
  return resident * static_cast<size_t>(sysconf(_SC_PAGESIZE));
}

}  // namespace processstate
