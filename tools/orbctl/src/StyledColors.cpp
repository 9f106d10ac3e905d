// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include <fmt/color.h>

#include "orbctl/Styled.h"

namespace orbctl {
namespace {

// The eight colours of the terminal, which its user can configure.
fmt::text_style styleFor(Style style) {
  switch (style) {
    case Style::kTitle:
      return fmt::emphasis::bold;
    case Style::kDim:
      return fmt::emphasis::faint;
    case Style::kGood:
      return fmt::fg(fmt::terminal_color::green);
    case Style::kWarn:
      return fmt::fg(fmt::terminal_color::yellow);
    case Style::kBad:
      return fmt::fg(fmt::terminal_color::red);
    case Style::kCapacity:
      return fmt::fg(fmt::terminal_color::cyan);
    case Style::kLatency:
      return fmt::fg(fmt::terminal_color::magenta);
    case Style::kPlain:
      break;
  }
  return {};
}

}  // namespace

std::string Row::coloredText() const {
  std::string text;
  for (const Span& span : mSpans) text += fmt::format(styleFor(span.style), "{}", span.text);
  return text;
}

}  // namespace orbctl
