// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
// An application has closed its standard streams and prints. No text reaches a descriptor of the
// library.
#include <gtest/gtest.h>
#include <spawn.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <unistd.h>

#include "Built.h"
#include "orbsim/Daemon.h"
#include "process_end.h"

namespace torture {
namespace {

constexpr size_t kRounds = 20;
constexpr size_t kServices = 3;

TEST(ClosedStreams, NothingThatIsPrintedReachesTheProtocol) {
  orbsim::Options options;
  options.reportInterval = std::chrono::milliseconds(1);
  orbsim::Daemon daemon(options);
  ASSERT_TRUE(daemon.start()) << daemon.error();
  // The stand-in of the platform would print as well. Only the application is to print here.
  setenv("ORB_LOG_LEVEL", "S", 1);
  std::string program = built(CLOSED_STREAMS_PROGRAM);
  std::string rounds = std::to_string(kRounds);
  char* arguments[] = {program.data(), rounds.data(), nullptr};
  pid_t child = 0;
  ASSERT_EQ(0, posix_spawn(&child, program.c_str(), nullptr, nullptr, arguments, environ));
  int status = 0;
  ASSERT_EQ(child, waitpid(child, &status, 0));
  EXPECT_TRUE(WIFEXITED(status));
  EXPECT_EQ(process_end::kExpected, WEXITSTATUS(status));
  // No handshake was disturbed and no connection lost.
  ASSERT_TRUE(daemon.waitForSessionsClosed(kRounds * kServices));
  EXPECT_EQ(kRounds * kServices, daemon.totals().sessions);
  EXPECT_EQ(kRounds * kServices, daemon.totals().connections);
  EXPECT_LE(2 * kRounds * kServices, daemon.frames().size());
  for (const orbsim::Frame& frame : daemon.frames()) {
    EXPECT_TRUE(frame.isBlob());
    EXPECT_EQ(orbsim::kDaemonProcessId, frame.header.destination);
    EXPECT_LE(105u, frame.header.source);
    EXPECT_GE(107u, frame.header.source);
    EXPECT_EQ(frame.sessionId, frame.header.sessionId);
    EXPECT_GT(100u, frame.header.payloadLength);
  }
}

}  // namespace
}  // namespace torture
