// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "Accounts.h"

#include <sched.h>
#include <unistd.h>

#include <chrono>
#include <set>
#include <string>

#include "ProcessState.h"

namespace failcalls {

namespace {

constexpr std::chrono::seconds kPatience(3);

}  // namespace

std::set<std::string> descriptors() {
  std::set<std::string> all;
  for (const std::string& number : processstate::entriesOf(processstate::kDescriptors)) {
    char target[256] = "";
    const std::string link = processstate::kDescriptors + ("/" + number);
    if (readlink(link.c_str(), target, sizeof target - 1) < 0) continue;
    const std::string file(target);
    const bool listing = file.find("/proc/") == 0;  // the directory that is being read
    if (!listing && file.find("/data/vendor/orb_logs") != 0) all.insert(number + " " + file);
  }
  return all;
}

bool runs(const std::string& thread) { return processstate::threadsNamed(thread) != 0; }

std::string notGivenBack(const std::set<std::string>& before) {
  const auto end = std::chrono::steady_clock::now() + kPatience;
  for (;;) {
    // Nothing signals that an ended thread has left the process's list of threads.
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
