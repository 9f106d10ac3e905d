// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "LogTag.h"

#include <gtest/gtest.h>

#include <string>

namespace {

TEST(LogTagTest, IsEmptyUntilOneIsSetAndForNull) {
  EXPECT_STREQ("", LogTag::get());
  LogTag::set("app");
  EXPECT_STREQ("app", LogTag::get());
  LogTag::set(nullptr);
  EXPECT_STREQ("", LogTag::get());
}

TEST(LogTagTest, FormerTagStaysReadable) {
  {
    const std::string text = "first";
    LogTag::set(text.c_str());
  }
  const char* const first = LogTag::get();
  for (int i = 0; i < 1000; ++i) LogTag::set(std::to_string(i).c_str());
  EXPECT_STREQ("first", first);
  EXPECT_STREQ("999", LogTag::get());
  LogTag::set("first");
  EXPECT_EQ(first, LogTag::get());
}

}  // namespace
