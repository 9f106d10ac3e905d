// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <cstdio>
#include <string>
#include <vector>

#include "orbctl/Record.h"

namespace orbctl {

// The names of the columns, and a record of them; each ends with a line feed.
std::string csvHeader();
std::string csvLineOf(const std::vector<Field>& fields);

// Takes the text of a CSV file apart: cells between commas, quoted where they hold a comma, a quote
// or a line's end. Records may end in CR LF; an empty line is none.
std::vector<std::vector<std::string>> csvRecordsOf(const std::string& text);

}  // namespace orbctl
