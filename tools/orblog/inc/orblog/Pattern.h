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

// A POSIX extended regular expression. Most lines of a log do not match what is looked for, so
// plain text that every match holds, if there is any, is looked for first: that is ten times as
// fast. Used by one thread.
class Pattern {
 public:
  // Without `caseSensitive` case counts when the expression has a capital letter. Null on failure,
  // with the reason in `error`.
  static std::shared_ptr<Pattern> make(const std::string& expression,
                                       std::optional<bool> caseSensitive, std::string& error);
  Pattern(const Pattern&) = delete;
  Pattern& operator=(const Pattern&) = delete;
  ~Pattern();
  bool isIn(std::string_view text);

 private:
  Pattern() = default;
  bool matches(std::string_view text);
  std::vector<std::string> mParts;  // every match holds one of them, if there are any
  bool mFoldsCase = false;
  std::unique_ptr<regex_t> mRegex;  // null when to hold one of the parts is all
  std::string mFolded, mClean;      // room for the text as it is compared
};

}  // namespace orblog
