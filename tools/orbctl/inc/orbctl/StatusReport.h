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

// How a service answered when it was enabled through the library.
struct ServiceFinding {
  enum class State { kEnabled, kRefused, kDown, kNoAnswer };
  Service service = Service::kLce;
  State state = State::kNoAnswer;
  std::optional<status_e> status;  // none without an answer
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

  // The first service that is not well; none when all are.
  const ServiceFinding* firstTrouble() const;
};

// Looks at the socket; asks the services when that is well and is where the library looks.
StatusReport findStatus(const std::string& path, std::chrono::milliseconds timeout);

// A status for each case, see the man page.
int exitStatusOf(const StatusReport& report);
// What to do; "nothing to do" when all is well.
std::string nextStepOf(const StatusReport& report);
// For people, in lines.
std::string textOf(const StatusReport& report);

}  // namespace orbctl
