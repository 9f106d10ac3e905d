// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
// Children that were forked during traffic end in the way that they choose, their calls are
// refused, and the parent is not disturbed.
#include <gtest/gtest.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "Built.h"
#include "TestKeys.h"
#include "Torture.h"
#include "orbsim/Daemon.h"
#include "process_end.h"

namespace torture {
namespace {

constexpr char kConfig[] = "/data/vendor/orb_logs/config/orb_log_config";

// One configuration of the program's log.
struct Logging {
  const char* name;
  const char* property;
  bool encrypted;

  friend std::ostream& operator<<(std::ostream& out, const Logging& logging) {
    return out << logging.name;
  }
};

class ForkExit : public ::testing::TestWithParam<Logging> {
 protected:
  static orbsim::Options options() {
    orbsim::Options options;
    options.reportInterval = std::chrono::milliseconds(1);
    options.record = false;
    return options;
  }
  void SetUp() override {
    ASSERT_TRUE(mDaemon.start()) << mDaemon.error();
    if (!GetParam().encrypted) return;
    const char smallestSizes[9] = {};
    std::ofstream(kConfig).write(smallestSizes, sizeof(smallestSizes))
        << testkeys::madeUpPublicPem(2048);
  }
  void TearDown() override { remove(kConfig); }

  static size_t encryptedFiles() {
    size_t files = 0;
    for (const auto& file : std::filesystem::directory_iterator("/data/vendor/orb_logs/other")) {
      if (file.path().filename().string().find("orb_log_fork_exit") == 0) ++files;
    }
    return files;
  }

  static int run(const std::string& forks) {
    const std::string program = built(FORK_EXIT_PROGRAM);
    const char* const words[] = {program.c_str(), GetParam().property, forks.c_str(), nullptr};
    pid_t child = 0;
    if (posix_spawn(&child, words[0], nullptr, nullptr, const_cast<char* const*>(words), environ) !=
        0) {
      return -1;
    }
    int status = -1;
    waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  }

  orbsim::Daemon mDaemon{options()};
};

TEST_P(ForkExit, OfChildrenUnderTrafficIsAsTheyChoose) {
  const uint64_t forks = countOr(kChecked ? 30 : 200);
  EXPECT_EQ(process_end::kExpected, run(std::to_string(forks)));
  EXPECT_EQ(GetParam().encrypted, encryptedFiles() > 0);
}

INSTANTIATE_TEST_SUITE_P(With, ForkExit,
                         ::testing::Values(Logging{"PlainLogging", "", false},
                                           Logging{"DeferredLogging", "1", false},
                                           Logging{"EncryptedLogging", "", true}),
                         [](const auto& logging) { return std::string(logging.param.name); });

}  // namespace
}  // namespace torture
