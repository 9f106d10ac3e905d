// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <string>
#include <string_view>

namespace orblog {

// The text with everything that a terminal might obey written as \xNN: control characters other
// than tab, C1 controls, and bytes that are no UTF-8. A log line holds what applications and the
// daemon put there.
std::string terminalSafe(std::string_view text);

// Appends the text as a JSON string with its quotes, in ASCII; bytes that are no UTF-8 become
// U+FFFD.
void appendJson(std::string& out, std::string_view text);

}  // namespace orblog
