// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
// What --grep finds.
#include <gtest/gtest.h>

#include "orblog/Pattern.h"

using namespace orblog;

namespace {

bool isIn(const std::string& expression, const std::string& text,
          std::optional<bool> caseSensitive = std::nullopt) {
  std::string error;
  const std::shared_ptr<Pattern> pattern = Pattern::make(expression, caseSensitive, error);
  EXPECT_NE(pattern, nullptr) << expression << ": " << error;
  return pattern != nullptr && pattern->isIn(text);
}

const char kText[] = "|ORB|Log::init:225 cannot open liborbalog.so";

TEST(OrblogPattern, PlainTextIsFoundAnywhere) {
  for (const char* expression : {"orb", "cannot", ".so", "225 cannot open"})
    EXPECT_TRUE(isIn(expression, kText)) << expression;
  EXPECT_FALSE(isIn("cannot close", kText));
  EXPECT_TRUE(isIn("cannot", "cannot"));
  EXPECT_FALSE(isIn("cannot", "canno"));
}

TEST(OrblogPattern, CaseCountsWhenTheExpressionHasACapital) {
  EXPECT_TRUE(isIn("log::INIT", "log::INIT"));
  EXPECT_FALSE(isIn("log::INIT", "Log::init"));
  EXPECT_TRUE(isIn("log::init", "LOG::INIT"));
  EXPECT_TRUE(isIn("log::[a-z]+:[0-9]+", "LOG::INIT:225"));
  EXPECT_FALSE(isIn("Log::[a-z]+", "LOG::INIT"));
}

TEST(OrblogPattern, CaseCountsAsAskedFor) {
  EXPECT_FALSE(isIn("log::init", "LOG::INIT", true));
  EXPECT_TRUE(isIn("Log::Init", "LOG::INIT", false));
  EXPECT_FALSE(isIn("log::i.it", "LOG::INIT", true));
  EXPECT_TRUE(isIn("Log::I.it", "LOG::INIT", false));
}

// The search for plain text first must not hide a match.
TEST(OrblogPattern, ExpressionsMatchWhateverIsPlainInThem) {
  const struct {
    const char* expression;
    const char* found;
    const char* missed;
  } kCases[] = {{"a*b", "b", "a"},
                {"xa*b", "xb", "xa"},
                {"xa?b", "xb", "xaab"},
                {"xa{0,1}b", "xb", "xaab"},
                {"xa{2}b", "xaab", "xab"},
                {"xa+b", "xaab", "xb"},
                {"x.b", "xab", "xb"},
                {".*ab", "zab", "zaxb"},
                {"^ab", "abc", "cab"},
                {"ab$", "cab", "abc"},
                {"^ab$", "ab", "aab"},
                {"[ab]c", "bc", "dc"},
                {"(ab|cd)e", "cde", "abd"},
                {"x(ab)?y", "xy", "xab"},
                {"ab|cd", "xcdx", "acbd"},
                {"ab+|c.d", "cxd", "cd"},
                {"a|", "", nullptr},
                {"x*|y", "z", nullptr},
                {"a\\.b", "a.b", "axb"},
                {"a\\|b", "a|b", "a"},
                {"[|]", "|", "x"},
                {"a[b|c]d", "acd", "ad"},
                {"\\(x\\)", "(x)", "x"},
                {"result: -[0-9]+$", "returning: result: -1", "returning: result: 1"}};
  for (const auto& c : kCases) {
    EXPECT_TRUE(isIn(c.expression, c.found)) << c.expression;
    if (c.missed == nullptr) continue;  // it is in every text
    EXPECT_FALSE(isIn(c.expression, c.missed)) << c.expression;
  }
}

TEST(OrblogPattern, ZeroBytesHideNothing) {
  const std::string text("begin\0end", 9);
  EXPECT_TRUE(isIn("end", text));
  EXPECT_TRUE(isIn("en.$", text));
  EXPECT_TRUE(isIn("n.en", text));
}

TEST(OrblogPattern, EmptyTextsAreSearched) {
  EXPECT_TRUE(isIn("^$", ""));
  EXPECT_FALSE(isIn("a", ""));
}

TEST(OrblogPattern, WrongExpressionsAreRefusedWithTheReason) {
  for (const std::string& expression :
       {std::string("("), std::string("[a"), std::string("a{2,1}"), std::string(5000, '(')}) {
    std::string error;
    EXPECT_EQ(Pattern::make(expression, std::nullopt, error), nullptr) << expression;
    EXPECT_NE(error, "");
  }
}

}  // namespace
