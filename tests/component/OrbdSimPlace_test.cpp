// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

// The directory of the daemon stand-in's socket: which one it makes, and what it leaves.

#include <sys/stat.h>

#include <cerrno>
#include <cstring>
#include <fstream>

#include "FewDescriptors.h"
#include "OrbdSimClient.h"

namespace orbsimtest {
namespace {

TEST_F(OrbdSimTest, MissingDirectoryIsNotMade) {
  Options options;
  options.socketPath = mDirectory + "/missing/orb";
  Daemon other(options);
  EXPECT_FALSE(other.start());
  EXPECT_EQ("bind " + options.socketPath + ": " + strerror(ENOENT), other.error());
  EXPECT_FALSE(std::filesystem::exists(mDirectory + "/missing"));
}

// The sandbox has the directory that a desktop has not.
class OrbdSimDefaultPlaceTest : public ::testing::Test {
 protected:
  OrbdSimDefaultPlaceTest() {
    Options options;
    options.log = log.sink();
    daemon = std::make_unique<Daemon>(options);
  }
  void TearDown() override { std::filesystem::create_directory(kDirectory); }

  const std::string kDirectory = "/dev/socket";
  LogLines log;
  std::unique_ptr<Daemon> daemon;
};

TEST_F(OrbdSimDefaultPlaceTest, MissingDirectoryIsMadeForEverybodyAndRemoved) {
  ASSERT_TRUE(std::filesystem::remove(kDirectory));
  const mode_t mask = ::umask(077);
  ASSERT_TRUE(daemon->start()) << daemon->error();
  ::umask(mask);
  struct stat status = {};
  ASSERT_EQ(0, ::stat(kDirectory.c_str(), &status));
  EXPECT_EQ(S_IFDIR | 0755u, status.st_mode);
  daemon->stop();
  EXPECT_FALSE(std::filesystem::exists(kDirectory));
  EXPECT_EQ((std::vector<std::string>{"made /dev/socket", "listening on /dev/socket/orb",
                                      "removed /dev/socket", "stopped"}),
            log.lines());
}

TEST_F(OrbdSimDefaultPlaceTest, DirectoryThatWasThereStays) {
  ASSERT_TRUE(daemon->start()) << daemon->error();
  daemon->stop();
  EXPECT_TRUE(std::filesystem::exists(kDirectory));
  EXPECT_EQ((std::vector<std::string>{"listening on /dev/socket/orb", "stopped"}), log.lines());
}

TEST_F(OrbdSimDefaultPlaceTest, DirectoryThatOthersUseStays) {
  ASSERT_TRUE(std::filesystem::remove(kDirectory));
  ASSERT_TRUE(daemon->start()) << daemon->error();
  std::ofstream(kDirectory + "/other") << "text";
  daemon->stop();
  EXPECT_TRUE(std::filesystem::remove(kDirectory + "/other"));
  EXPECT_EQ("left /dev/socket: Directory not empty", log.lines().at(2));
}

TEST_F(OrbdSimDefaultPlaceTest, NothingStaysWhenTheSocketCannotBeMade) {
  ASSERT_TRUE(std::filesystem::remove(kDirectory));
  {
    const FewDescriptors few(0);
    EXPECT_FALSE(daemon->start());
  }
  EXPECT_EQ(std::string("socket /dev/socket/orb: ") + strerror(EMFILE), daemon->error());
  EXPECT_FALSE(std::filesystem::exists(kDirectory));
}

}  // namespace
}  // namespace orbsimtest
