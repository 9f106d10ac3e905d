// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "orblog/Text.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <nlohmann/json.hpp>

namespace orblog {
namespace {

constexpr char32_t kInvalid = 0xFFFFFFFF;

uint8_t byteAt(std::string_view text, size_t at) { return static_cast<uint8_t>(text[at]); }

// The character at the start of the text, which is not empty, and its size in bytes; kInvalid and 1
// if it is not well-formed.
char32_t firstCharacter(std::string_view text, size_t& size) {
  const uint8_t lead = byteAt(text, 0);
  size = 1;
  if (lead < 0x80) return lead;
  const size_t count = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
  if (lead < 0xC2 || lead > 0xF4 || text.size() < count) return kInvalid;
  char32_t character = lead & (0xFFU >> (count + 1));
  for (size_t i = 1; i < count; ++i) {
    const uint8_t next = byteAt(text, i);
    if ((next & 0xC0) != 0x80) return kInvalid;
    character = character << 6 | (next & 0x3FU);
  }
  constexpr char32_t kLeast[] = {0, 0, 0x80, 0x800, 0x10000};
  if (character < kLeast[count] || character > 0x10FFFF ||
      (character >= 0xD800 && character <= 0xDFFF))
    return kInvalid;
  size = count;
  return character;
}

// Control characters of ASCII, and of C1, which also control terminals.
bool isControl(char32_t character) {
  return character < 0x20 || (character >= 0x7F && character < 0xA0);
}

bool needsEscape(uint8_t letter) {
  return static_cast<uint8_t>(letter - 0x20) >= 0x5F || letter == '"' || letter == '\\';
}

// In blocks of a fixed size, which the compiler can vectorise.
bool needsEscape(std::string_view text) {
  constexpr size_t kBlock = 32;
  for (; text.size() >= kBlock; text.remove_prefix(kBlock)) {
    std::array<uint8_t, kBlock> block;
    std::memcpy(block.data(), text.data(), kBlock);
    bool needs = false;
    for (const uint8_t letter : block) needs |= needsEscape(letter);
    if (needs) return true;
  }
  return std::any_of(text.begin(), text.end(),
                     [](char letter) { return needsEscape(static_cast<uint8_t>(letter)); });
}

void appendEscape(std::string& out, const char* format, unsigned value) {
  char escape[8];
  std::snprintf(escape, sizeof escape, format, value);
  out += escape;
}

}  // namespace

std::string terminalSafe(std::string_view text) {
  std::string out;
  out.reserve(text.size());
  while (!text.empty()) {
    size_t size = 0;
    const char32_t character = firstCharacter(text, size);
    if (character != kInvalid && (!isControl(character) || character == '\t')) {
      out += text.substr(0, size);
    } else {
      for (size_t i = 0; i < size; ++i) appendEscape(out, "\\x%02x", byteAt(text, i));
    }
    text.remove_prefix(size);
  }
  return out;
}

void appendJson(std::string& out, std::string_view text) {
  // Nearly all texts need no escapes, and the JSON library checks each character, so this is
  // faster.
  if (!needsEscape(text)) {
    out += '"';
    out += text;
    out += '"';
    return;
  }
  // Everything beyond ASCII is escaped, so that a terminal gets no control character.
  using nlohmann::json;
  out += json(text).dump(-1, ' ', true, json::error_handler_t::replace);
}

}  // namespace orblog
