// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "orblog/Colour.h"

#include <fmt/color.h>
#include <unistd.h>

#include <cstdlib>
#include <iterator>

namespace orblog {
namespace {

fmt::text_style styleOf(char level) {
  switch (level) {
    case 'F':
    case 'E':
      return fmt::emphasis::bold | fmt::fg(fmt::terminal_color::red);
    case 'W':
      return fmt::fg(fmt::terminal_color::yellow);
    case 'D':
    case 'V':
      return fmt::text_style(fmt::emphasis::faint);
    default:
      return {};
  }
}

bool isSet(const char* name) {
  const char* const value = std::getenv(name);
  return value != nullptr && *value != '\0';
}

}  // namespace

bool wantsColour(ColourWish wish) {
  if (wish != ColourWish::Auto) return wish == ColourWish::Always;
  const char* const terminal = std::getenv("TERM");
  return isatty(STDOUT_FILENO) == 1 && !isSet("NO_COLOR") &&
         (terminal == nullptr || std::string_view(terminal) != "dumb");
}

void appendColoured(std::string& out, char level, std::string_view text) {
  fmt::format_to(std::back_inserter(out), styleOf(level), "{}", text);
}

}  // namespace orblog
