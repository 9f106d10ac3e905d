// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
// An application may change its environment while the library works and logs.
#include <gtest/gtest.h>
#include <spawn.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <unistd.h>

#include <string>

#include "Built.h"
#include "Torture.h"
#include "orbsim/Daemon.h"
#include "process_end.h"

namespace torture {
namespace {

TEST(EnvironmentStorm, TheApplicationLives) {
  orbsim::Options options;
  options.reportInterval = std::chrono::milliseconds(1);
  orbsim::Daemon daemon(options);
  ASSERT_TRUE(daemon.start()) << daemon.error();
  setenv("ORB_LOG_LEVEL", "S", 1);          // prints no line,
  setenv("ORB_DIAG_FILE", "/dev/null", 1);  // but makes a packet of each, with its time
  std::string program = built(ENVIRONMENT_STORM_PROGRAM);
  std::string rounds = std::to_string(countOr(kChecked ? 500 : 4000));
  char* arguments[] = {program.data(), rounds.data(), nullptr};
  pid_t child = 0;
  ASSERT_EQ(0, posix_spawn(&child, program.c_str(), nullptr, nullptr, arguments, environ));
  int status = 0;
  ASSERT_EQ(child, waitpid(child, &status, 0));
  EXPECT_TRUE(WIFEXITED(status)) << "signal " << WTERMSIG(status);
  EXPECT_EQ(process_end::kExpected, WEXITSTATUS(status));
}

}  // namespace
}  // namespace torture
