// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "Accounts.h"

#include <dirent.h>
#include <sched.h>
#include <unistd.h>

#include <chrono>
#include <fstream>
#include <functional>

namespace failcalls {

namespace {

constexpr char kTasks[] = "/proc/self/task/";
constexpr char kDescriptors[] = "/proc/self/fd/";
constexpr std::chrono::seconds kPatience(3);

void forEachIn(const char* path, const std::function<void(const std::string&)>& look) {
  DIR* const directory = opendir(path);
  if (directory == nullptr) return;
  while (const dirent* const entry = readdir(directory)) {
    if (entry->d_name[0] != '.') look(entry->d_name);
  }
  closedir(directory);
}

std::set<std::string> threadNames() {
  std::set<std::string> names;
  forEachIn(kTasks, [&](const std::string& id) {
    std::ifstream file(kTasks + id + "/comm");
    std::string name;
    if (std::getline(file, name)) names.insert(name);
  });
  return names;
}

}  // namespace

std::set<std::string> descriptors() {
  std::set<std::string> all;
  forEachIn(kDescriptors, [&](const std::string& number) {
    char target[256] = "";
    if (readlink((kDescriptors + number).c_str(), target, sizeof target - 1) < 0) return;
    const std::string file(target);
    const bool listing = file.find("/proc/") == 0;  // the directory that is being read
    if (!listing && file.find("/data/vendor/orb_logs") != 0) all.insert(number + " " + file);
  });
  return all;
}

bool runs(const std::string& thread) { return threadNames().count(thread) != 0; }

std::string notGivenBack(const std::set<std::string>& before) {
  const auto end = std::chrono::steady_clock::now() + kPatience;
  for (;;) {
    // Nothing signals that a thread which has done its last step has left the process's list.
    std::string missing;
    for (const char* const thread : {"orb-sdk", "orb-receiver", "orb-closer"}) {
      if (runs(thread)) missing += std::string(" thread ") + thread;
    }
    for (const std::string& descriptor : descriptors()) {
      if (before.count(descriptor) == 0) missing += " descriptor " + descriptor;
    }
    if (missing.empty() || std::chrono::steady_clock::now() > end) return missing;
    sched_yield();
  }
}

}  // namespace failcalls
