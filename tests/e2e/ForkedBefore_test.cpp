// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
// A process that forks before it uses the library, as daemons do.
#include <sys/wait.h>
#include <unistd.h>

#include "AllServicesFixture.h"

namespace allservices {
namespace {

TEST(ForkedBefore, ChildUsesTheLibrary) {
  EXPECT_EQ(-5, kLle.requests().front().valid()) << "a refused call is no use";
  const pid_t child = fork();
  ASSERT_LE(0, child);
  if (child == 0) {
    orbsim::Daemon daemon;
    const bool works = daemon.start() && kLle.enable() == 1 && daemon.waitForFrames(1) &&
                       !kLle.waitForCalls(1).empty() && kLle.disable() == 1;
    daemon.stop();
    _exit(works ? 0 : 1);
  }
  int status = -1;
  EXPECT_EQ(child, waitpid(child, &status, 0));
  EXPECT_TRUE(WIFEXITED(status));
  EXPECT_EQ(0, WEXITSTATUS(status));
}

}  // namespace
}  // namespace allservices
