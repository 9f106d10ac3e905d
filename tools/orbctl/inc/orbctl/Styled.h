// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace orbctl {

// The meaning of a piece of text; it selects the colour.
enum class Style { kPlain, kTitle, kDim, kGood, kWarn, kBad, kCapacity, kLatency };
constexpr size_t kStyles = 8;

struct Span {
  std::string text;
  Style style = Style::kPlain;
};

// One line of the terminal as pieces of text. All characters have a width of one column.
class Row {
 public:
  Row() = default;
  Row(std::string text, Style style = Style::kPlain) { add(std::move(text), style); }

  Row& add(std::string text, Style style = Style::kPlain);
  Row& add(const Row& other);
  // Adds blanks up to a column, at least one.
  Row& fillTo(size_t column);
  size_t width() const { return mWidth; }
  const std::vector<Span>& spans() const { return mSpans; }
  // The same row, cut to this number of columns.
  Row cut(size_t columns) const;
  std::string plainText() const;
  // The text with the escape sequences for colours.
  std::string coloredText() const;

 private:
  std::vector<Span> mSpans;
  size_t mWidth = 0;
};

// The number of columns of a text.
size_t columnsOf(const std::string& text);

}  // namespace orbctl
