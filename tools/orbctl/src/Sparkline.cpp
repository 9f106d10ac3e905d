// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include <algorithm>
#include <array>
#include <cmath>

#include "orbctl/View.h"

namespace orbctl {

std::string sparkline(const std::deque<double>& values, size_t columns, bool unicode) {
  static constexpr std::array<const char*, 8> kBars = {"\u2581", "\u2582", "\u2583", "\u2584",
                                                       "\u2585", "\u2586", "\u2587", "\u2588"};
  static constexpr std::array<const char*, 8> kPlainBars = {"_", ".", ":", "-", "=", "+", "*", "#"};
  const auto& bars = unicode ? kBars : kPlainBars;
  const size_t shown = std::min(columns, values.size());
  const auto first = values.end() - static_cast<std::ptrdiff_t>(shown);
  double greatest = 0;
  std::for_each(first, values.end(), [&](double value) {
    if (!std::isnan(value)) greatest = std::max(greatest, value);
  });
  std::string text;
  std::for_each(first, values.end(), [&](double value) {
    if (std::isnan(value)) {
      text += ' ';
      return;
    }
    const double part = greatest > 0 ? value / greatest : 0;
    text += bars[std::min(static_cast<size_t>(part * 8), bars.size() - 1)];
  });
  return text;
}

}  // namespace orbctl
