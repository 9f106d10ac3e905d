// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
//
// The log without an installed hook library.
#include <dlfcn.h>

#include "LogTestPeer.h"

namespace {

using LogHookAbsentTest = LogFixture;

TEST_F(LogHookAbsentTest, ALineSaysSoAndThePlatformLogGoesOn) {
  log.init("app");
  EXPECT_EQ((std::vector<std::string>{"|ORB|Log::init:225 cannot open liborbalog.so",
                                      "|ORB|Log::printVersion:155 version ORB-20250524-d9c57ad5"}),
            recording::texts());
}

// The application also loads libraries, and checks the result with dlerror().
TEST_F(LogHookAbsentTest, ApplicationDoesNotHearOfIt) {
  log.init("app");
  EXPECT_EQ(nullptr, dlerror());
}

}  // namespace
