// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <cstdio>
#include <string>
#include <vector>

#include "orbctl/Record.h"

namespace orbctl {

// The header line, and a line for a record; each ends with a line feed.
std::string csvHeader();
std::string csvLineOf(const std::vector<Field>& fields);

// Splits the text of a CSV file into cells. A cell is quoted if it contains a comma, a quote or a
// line end. Records may end in CR LF; empty lines are skipped.
std::vector<std::vector<std::string>> csvRecordsOf(const std::string& text);

}  // namespace orbctl
