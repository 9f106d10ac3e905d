// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <vector>

#include "Report.h"

namespace failcalls {

// What an application does while calls fail. It runs once in a separate process, which also
// contains a daemon whose calls never fail.
struct Scenario {
  const char* name;
  void (*run)(Run& run);
  // The calls that are made to fail in it, without those of the other scenario.
  std::vector<Call> calls;
};

// All services with requests, indications, a lost connection, a disable inside a callback.
extern const Scenario kServicesScenario;
// One service with all kinds of logging: encrypted files, deferred records, the diagnostic command.
// Calls for logging fail, and the application must not notice.
extern const Scenario kLogScenario;

// Writes the configuration of the log scenario; once, before the first run.
void prepareLogScenario();

}  // namespace failcalls
