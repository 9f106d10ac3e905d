// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <vector>

#include "Report.h"

namespace failcalls {

// What an application does while calls fail. Runs once in a process of its own, with a daemon that
// never fails in the same process.
struct Scenario {
  const char* name;
  void (*run)(Run& run);
  // The calls that are made to fail in it; those of the other scenario are not repeated.
  std::vector<Call> calls;
};

// All services with requests, indications, a lost connection, a disable inside a callback.
extern const Scenario kServicesScenario;
// One service with all that logging can do: encrypted files, deferred records, the diagnostic
// command. What its logs go to fails, and the application must not notice.
extern const Scenario kLogScenario;

// What the log scenario finds configured; once, before the first run.
void prepareLogScenario();

}  // namespace failcalls
