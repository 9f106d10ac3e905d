// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
// The start of encrypted logging without memory: it is either on, or off with a message.
#include <cstdio>

#include "FailingNew.h"
#include "LogEncryptionFixture.h"

namespace logtest {
namespace {

class LogEncryptionMemoryTest : public LogEncryptionFixture {};

TEST_F(LogEncryptionMemoryTest, StartThatFailsIsReportedAndTheLogGoesOnInTheClear) {
  size_t reported = 0;
  configure();
  log.init("orb");  // what is made once per process
  const auto startOver = [] {
    LogTestPeer::reset();
    recording::clear();
    clearData();
    configure();
  };
  startOver();
  const size_t failed = memory::failEach(
      memory::Caller::Anybody, [this] { log.init("orb"); },
      [&](size_t nth) {
        const bool on = LogTestPeer::encryptionEnabled();
        EXPECT_EQ(on ? 0u : 1u, recording::count(kInitFailedLine)) << nth;
        for (const recording::Line& line : recording::lines()) {
          if (line.text == kInitFailedLine) {
            EXPECT_EQ(6, line.priority);
          }
        }
        if (!on) ++reported;
        recording::clear();
        say("goes on");
        EXPECT_TRUE(recording::has("|T|File::f:1 goes on")) << nth;
        EXPECT_EQ(on, !namesIn(kMain).empty()) << nth;
        startOver();
      });
  std::printf("%zu allocations failed, %zu of them left the log in the clear\n", failed, reported);
  EXPECT_GT(reported, 0u);
  EXPECT_TRUE(LogTestPeer::encryptionEnabled());
  say("encrypted");
  EXPECT_EQ(Texts{"encrypted"}, messagesOf(linesIn(fs::path(kMain) / "orb_log_p0_00")));
}

}  // namespace
}  // namespace logtest
