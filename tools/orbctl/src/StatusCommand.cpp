// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
// orbctl status: checks the daemon and diagnoses problems.
#include <cstdio>

#include "Commands.h"
#include "orbctl/Json.h"
#include "orbctl/StatusReport.h"

namespace orbctl {

int runStatus(const StatusSettings& settings) {
  const StatusReport report = findStatus(settings.socket, settings.timeout);
  std::fputs((settings.json ? jsonOf(report) : textOf(report)).c_str(), stdout);
  return exitStatusOf(report);
}

}  // namespace orbctl
