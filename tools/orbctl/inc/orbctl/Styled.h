// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace orbctl {

// What a piece of text means; the terminal's colours follow from it.
enum class Style { kPlain, kTitle, kDim, kGood, kWarn, kBad, kCapacity, kLatency };
constexpr size_t kStyles = 8;

struct Span {
  std::string text;
  Style style = Style::kPlain;
};

// One line of the terminal, in pieces. Its texts are ASCII and characters that take one column.
class Row {
 public:
  Row() = default;
  Row(std::string text, Style style = Style::kPlain) { add(std::move(text), style); }

  Row& add(std::string text, Style style = Style::kPlain);
  Row& add(const Row& other);
  // Blanks up to a column, at least one.
  Row& fillTo(size_t column);
  size_t width() const { return mWidth; }
  const std::vector<Span>& spans() const { return mSpans; }
  // The same, cut to so many columns.
  Row cut(size_t columns) const;
  std::string plainText() const;
  // With the escape sequences of colours.
  std::string coloredText() const;

 private:
  std::vector<Span> mSpans;
  size_t mWidth = 0;
};

// Columns that a text takes.
size_t columnsOf(const std::string& text);

}  // namespace orbctl
