// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <string>
#include <string_view>

namespace orblog {

enum class ColourWish { Auto, Always, Never };

// Whether standard output is to have colours: as asked for, or when it is a terminal that has them
// and NO_COLOR is not set.
bool wantsColour(ColourWish wish);

// Appends the text in the colour of its level, a letter as lines have it.
void appendColoured(std::string& out, char level, std::string_view text);

}  // namespace orblog
