// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
//
// The log where no hook library is installed.
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

// It loads libraries, too, and asks dlerror() whether that has worked.
TEST_F(LogHookAbsentTest, ApplicationDoesNotHearOfIt) {
  log.init("app");
  EXPECT_EQ(nullptr, dlerror());
}

}  // namespace
