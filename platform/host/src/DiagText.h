// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

// What programs say is shown on a terminal, which nothing in it may steer. Header only: libdiag and
// the tool beside it both need it.
namespace diaghost {

// How many bytes the well-formed UTF-8 character takes that the text begins with; 0 for none.
inline size_t characterSize(std::string_view text) {
  const auto at = [text](size_t i) { return static_cast<uint8_t>(text[i]); };
  const uint8_t lead = at(0);
  if (lead < 0x80) return 1;
  const size_t size = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
  if (lead < 0xC2 || lead > 0xF4 || text.size() < size) return 0;
  for (size_t i = 1; i < size; ++i) {
    if ((at(i) & 0xC0) != 0x80) return 0;
  }
  // Overlong forms, halves of surrogate pairs, and what is beyond the last character.
  const uint8_t next = at(1);
  const bool wrong = (lead == 0xE0 && next < 0xA0) || (lead == 0xED && next > 0x9F) ||
                     (lead == 0xF0 && next < 0x90) || (lead == 0xF4 && next > 0x8F);
  return wrong ? 0 : size;
}

// The text with a "?" for each control character, those of C1 too, and for each byte that belongs
// to no character.
inline std::string maskControls(std::string_view text) {
  std::string out;
  while (!text.empty()) {
    const size_t size = characterSize(text);
    const uint8_t first = static_cast<uint8_t>(text[0]);
    const bool ascii = size == 1 && (first < 0x20 || first == 0x7F);
    const bool c1 = size == 2 && first == 0xC2 && static_cast<uint8_t>(text[1]) < 0xA0;
    if (size == 0 || ascii || c1) {
      out += '?';
    } else {
      out += text.substr(0, size);
    }
    text.remove_prefix(size == 0 ? 1 : size);
  }
  return out;
}

}  // namespace diaghost
