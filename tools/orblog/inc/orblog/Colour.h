// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <string>
#include <string_view>

namespace orblog {

enum class ColourWish { Auto, Always, Never };

// Whether standard output has colours: as requested, or automatically if it is a terminal with
// colours and NO_COLOR is not set.
bool wantsColour(ColourWish wish);

// Appends the text in the colour of its level, which is a letter as in log lines.
void appendColoured(std::string& out, char level, std::string_view text);

}  // namespace orblog
