// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "orblog/Pattern.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace orblog {
namespace {

// The C library uses a stack frame for each open parenthesis.
constexpr size_t kLongest = 4096;
constexpr char kSpecial[] = "\\^$.[]|()*+?{}";

char folded(char letter) {
  const bool isCapital = static_cast<unsigned char>(letter - 'A') < 26;
  return static_cast<char>(letter | (isCapital ? 0x20 : 0));
}

// The longest plain text that every match of an expression without alternatives contains, if it is
// easy to find: before the first group, set, count or escape. Optional characters are not part of
// it.
std::string plainPartOf(std::string_view expression) {
  std::string_view best;
  while (!expression.empty()) {
    const size_t size = std::min(expression.find_first_of(kSpecial), expression.size());
    const char next = size < expression.size() ? expression[size] : '\0';
    const bool mayLack = next == '*' || next == '?' || next == '{';
    const std::string_view plain = expression.substr(0, size - (mayLack && size > 0 ? 1 : 0));
    if (plain.size() > best.size()) best = plain;
    if (next == '\0' || std::strchr("\\[](){}", next) != nullptr) break;
    expression.remove_prefix(size + 1);
  }
  return std::string(best);
}

// Texts of which every match contains one; empty if not known.
std::vector<std::string> plainPartsOf(const std::string& expression) {
  std::vector<std::string> parts;
  const bool hasAlternatives = expression.find('|') != std::string::npos;
  if (hasAlternatives && expression.find_first_of("\\[(") != std::string::npos) return parts;
  for (size_t start = 0; start <= expression.size();) {
    const size_t end = std::min(expression.find('|', start), expression.size());
    parts.push_back(plainPartOf(std::string_view(expression).substr(start, end - start)));
    if (parts.back().empty()) return {};
    start = end + 1;
  }
  return parts;
}

// In blocks of a fixed size, which the compiler can vectorise.
void fold(std::string_view text, std::string& out) {
  constexpr size_t kBlock = 32;
  out.assign(text);
  size_t at = 0;
  for (; at + kBlock <= out.size(); at += kBlock) {
    std::array<char, kBlock> block;
    std::memcpy(block.data(), out.data() + at, kBlock);
    for (char& letter : block) letter = folded(letter);
    std::memcpy(out.data() + at, block.data(), kBlock);
  }
  for (; at < out.size(); ++at) out[at] = folded(out[at]);
}

}  // namespace

std::shared_ptr<Pattern> Pattern::make(const std::string& expression,
                                       std::optional<bool> caseSensitive, std::string& error) {
  std::shared_ptr<Pattern> pattern(new Pattern);
  const bool hasCapital = std::any_of(expression.begin(), expression.end(),
                                      [](char letter) { return folded(letter) != letter; });
  pattern->mFoldsCase = !caseSensitive.value_or(hasCapital);
  pattern->mParts = plainPartsOf(expression);
  for (std::string& part : pattern->mParts) {
    if (pattern->mFoldsCase) fold(std::string(part), part);
  }
  // Only plain text, or alternatives of plain texts.
  if (!pattern->mParts.empty() && expression.find_first_of("\\^$.[]()*+?{}") == std::string::npos)
    return pattern;
  if (expression.size() > kLongest) {
    error = "longer than " + std::to_string(kLongest) + " characters";
    return nullptr;
  }
  auto regex = std::make_unique<regex_t>();
  const int failure = regcomp(regex.get(), expression.c_str(),
                              REG_EXTENDED | REG_NOSUB | (pattern->mFoldsCase ? REG_ICASE : 0));
  if (failure != 0) {
    std::array<char, 200> reason = {};
    (void)regerror(failure, regex.get(), reason.data(), reason.size());
    error = reason.data();
    return nullptr;
  }
  pattern->mRegex = std::move(regex);
  return pattern;
}

Pattern::~Pattern() {
  if (mRegex != nullptr) regfree(mRegex.get());
}

bool Pattern::isIn(std::string_view text) {
  std::string_view compared = text;
  if (mFoldsCase && !mParts.empty()) {
    fold(text, mFolded);
    compared = mFolded;
  }
  const auto holds = [compared](const std::string& part) {
    return memmem(compared.data(), compared.size(), part.data(), part.size()) != nullptr;
  };
  if (!mParts.empty() && std::none_of(mParts.begin(), mParts.end(), holds)) return false;
  return mRegex == nullptr || matches(text);
}

bool Pattern::matches(std::string_view text) {
  // The C library stops at a zero byte. The writer of a line must not be able to hide the rest of
  // the line with it.
  mClean.assign(text);
  std::replace(mClean.begin(), mClean.end(), '\0', '\x01');
  return regexec(mRegex.get(), mClean.c_str(), 0, nullptr, 0) == 0;
}

}  // namespace orblog
