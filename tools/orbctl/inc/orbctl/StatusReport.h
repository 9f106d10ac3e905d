// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <vector>

#include "orbctl/Event.h"
#include "orbctl/SocketProbe.h"

namespace orbctl {

// The answer of a service when it was enabled through the library.
struct ServiceFinding {
  enum class State { kEnabled, kRefused, kDown, kNoAnswer };
  Service service = Service::kLce;
  State state = State::kNoAnswer;
  std::optional<status_e> status;  // empty without an answer
  std::chrono::milliseconds after{0};
};

const char* wordOf(ServiceFinding::State state);

struct StatusReport {
  std::string path;
  std::chrono::milliseconds timeout{0};
  SocketFinding socket;
  bool asked = false;  // whether the services were asked
  std::string notAskedBecause;
  std::vector<ServiceFinding> services;

  // The first service that has a problem, or null.
  const ServiceFinding* firstTrouble() const;
};

// Checks the socket. Asks the services if the socket is well and is the one that the library uses.
StatusReport findStatus(const std::string& path, std::chrono::milliseconds timeout);

// The exit status for each case, see the man page.
int exitStatusOf(const StatusReport& report);
// The next step; "nothing to do" if there is no problem.
std::string nextStepOf(const StatusReport& report);
// The report as lines of text.
std::string textOf(const StatusReport& report);

}  // namespace orbctl
