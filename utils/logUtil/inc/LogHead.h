// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <cstddef>
#include <cstring>
#include <string_view>

// What a line begins with, "|tag|File::function:line ". The macros of the log have the compiler put
// it together, once for each place, so that a line costs a single copy of it. A constant.
class LogHead {
 public:
  constexpr LogHead() = default;
  // Too long a head does not compile: it would not fit.
  constexpr LogHead(std::string_view tag, std::string_view file, std::string_view function,
                    int line) {
    add("|");
    add(tag);
    add("|");
    add(baseName(file));
    add("::");
    add(function);
    add(":");
    addNumber(line);
    add(" ");
  }

  constexpr std::string_view text() const { return {mText, mSize}; }

  static constexpr size_t kMaxSize = 96;
  // Copies the text and what is behind it; returns the text's size. A copy of fixed size is a few
  // instructions.
  size_t copyTo(char* out) const {
    std::memcpy(out, mText, sizeof mText);
    return mSize;
  }

  // The last component of a path, without its extension.
  static constexpr std::string_view baseName(std::string_view file) {
    file.remove_prefix(file.rfind('/') + 1);  // npos + 1 is 0: a path of one component
    return file.substr(0, file.rfind('.'));
  }

 private:
  constexpr void add(std::string_view part) {
    for (const char c : part) mText[mSize++] = c;
  }
  constexpr void addNumber(int number) {
    int power = 1;
    while (number / power >= 10) power *= 10;
    for (; power > 0; power /= 10) mText[mSize++] = static_cast<char>('0' + number / power % 10);
  }

  char mText[kMaxSize] = {};
  size_t mSize = 0;
};
