// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "orbctl/Styled.h"

#include <algorithm>

namespace orbctl {
namespace {

bool continues(char c) { return (static_cast<unsigned char>(c) & 0xC0) == 0x80; }

// The start of a text, at most this number of columns.
std::string beginning(const std::string& text, size_t columns) {
  size_t at = 0;
  while (at < text.size() && (continues(text[at]) || columns > 0)) {
    if (!continues(text[at])) --columns;
    ++at;
  }
  return text.substr(0, at);
}

}  // namespace

size_t columnsOf(const std::string& text) {
  return static_cast<size_t>(
      std::count_if(text.begin(), text.end(), [](char c) { return !continues(c); }));
}

Row& Row::add(std::string text, Style style) {
  mWidth += columnsOf(text);
  if (!text.empty()) mSpans.push_back({std::move(text), style});
  return *this;
}

Row& Row::add(const Row& other) {
  for (const Span& span : other.mSpans) add(span.text, span.style);
  return *this;
}

Row& Row::fillTo(size_t column) {
  return add(std::string(column > mWidth ? column - mWidth : 1, ' '));
}

Row Row::cut(size_t columns) const {
  Row row;
  for (const Span& span : mSpans) {
    if (row.width() == columns) break;
    row.add(beginning(span.text, columns - row.width()), span.style);
  }
  return row;
}

std::string Row::plainText() const {
  std::string text;
  for (const Span& span : mSpans) text += span.text;
  return text;
}

}  // namespace orbctl
