// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <string>

#include "orbctl/Record.h"
#include "orbctl/StatusReport.h"

namespace orbctl {

// Each function returns one object on one line, with the line end.
std::string jsonOf(const std::vector<Field>& fields);
std::string jsonOf(const StatusReport& report);

}  // namespace orbctl
