// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <regex.h>

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orblog {

// A POSIX extended regular expression. Most lines of a log do not match. So if every match must
// contain some plain text, that text is searched first, which is ten times as fast. Used by one
// thread.
class Pattern {
 public:
  // Without `caseSensitive`, the match is case-sensitive if the expression has a capital letter.
  // Null on failure, with the reason in `error`.
  static std::shared_ptr<Pattern> make(const std::string& expression,
                                       std::optional<bool> caseSensitive, std::string& error);
  Pattern(const Pattern&) = delete;
  Pattern& operator=(const Pattern&) = delete;
  ~Pattern();
  bool isIn(std::string_view text);

 private:
  Pattern() = default;
  bool matches(std::string_view text);
  std::vector<std::string> mParts;  // if not empty, every match contains one of them
  bool mFoldsCase = false;
  std::unique_ptr<regex_t> mRegex;  // null if the parts alone decide
  std::string mFolded, mClean;      // buffers for the compared text
};

}  // namespace orblog
