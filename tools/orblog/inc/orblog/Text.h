// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <string>
#include <string_view>

namespace orblog {

// The text with everything that could control a terminal written as \xNN: control characters other
// than tab, C1 controls, and bytes that are not UTF-8. Applications and the daemon can put any text
// into a log line.
std::string terminalSafe(std::string_view text);

// Appends the text as a JSON string with quotes, in ASCII. Bytes that are not UTF-8 become U+FFFD.
void appendJson(std::string& out, std::string_view text);

}  // namespace orblog
