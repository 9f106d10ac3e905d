// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

// The directory of the daemon stand-in's socket: when it is created, and when it is removed.

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
  EXPECT_EQ("cannot listen on " + options.socketPath + ": " + strerror(ENOENT), other.error());
  EXPECT_FALSE(std::filesystem::exists(mDirectory + "/missing"));
}

// Each wrong path has its own message, and nothing changes.
class OrbdSimWrongPlaceTest : public OrbdSimTest {
 protected:
  static std::string errorOf(const std::string& path) {
    Options options;
    options.socketPath = path;
    Daemon other(options);
    EXPECT_FALSE(other.start());
    return other.error();
  }
};

TEST_F(OrbdSimWrongPlaceTest, EmptyPath) { EXPECT_EQ("a socket needs a path", errorOf("")); }

TEST_F(OrbdSimWrongPlaceTest, PathThatIsTooLong) {
  const std::string longest = mDirectory + "/" + std::string(106 - mDirectory.size(), 'x');
  EXPECT_EQ("a socket's path has at most 107 bytes: " + longest + "x", errorOf(longest + "x"));
  Options options;
  options.socketPath = longest;
  EXPECT_TRUE(Daemon(options).start());
}

TEST_F(OrbdSimWrongPlaceTest, FileStays) {
  const std::string file = mDirectory + "/file";
  std::ofstream(file) << "text";
  EXPECT_EQ("cannot listen on " + file + ": it exists and is no socket", errorOf(file));
  EXPECT_EQ(4u, std::filesystem::file_size(file));
}

// The sandbox has no capabilities, so root is refused like other users.
TEST_F(OrbdSimWrongPlaceTest, DirectoryThatNothingMayBeMadeIn) {
  const std::string directory = mDirectory + "/closed";
  ASSERT_EQ(0, ::mkdir(directory.c_str(), 0555));
  EXPECT_EQ("cannot listen on " + directory + "/orb: " + strerror(EACCES),
            errorOf(directory + "/orb"));
}

TEST_F(OrbdSimWrongPlaceTest, SocketThatMayNotBeTriedStays) {
  ASSERT_EQ(0, ::chmod(path().c_str(), 0));
  EXPECT_EQ("cannot listen on " + path() +
                ": cannot test whether the existing socket is in use: " + strerror(EACCES),
            errorOf(path()));
  ASSERT_EQ(0, ::chmod(path().c_str(), 0666));
  EXPECT_TRUE(Client(path()).connected());
}

TEST_F(OrbdSimWrongPlaceTest, WhatIsWrongIsSeenBeforehand) {
  using orbsim::SocketPlace;
  EXPECT_EQ("", SocketPlace::whyWrong(path()));
  EXPECT_EQ("", SocketPlace::whyWrong("orb"));
  EXPECT_EQ("", SocketPlace::whyWrong("/dev/socket/orb"));
  EXPECT_EQ("a socket needs a path", SocketPlace::whyWrong(""));
  const std::string missing = mDirectory + "/missing/orb";
  EXPECT_EQ("its directory does not exist: " + missing, SocketPlace::whyWrong(missing));
  EXPECT_EQ("its directory does not exist: " + path() + "/orb",
            SocketPlace::whyWrong(path() + "/orb"));
}

// The sandbox has this directory; a desktop does not.
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
  EXPECT_EQ(std::string("cannot listen on /dev/socket/orb: ") + strerror(EMFILE), daemon->error());
  EXPECT_FALSE(std::filesystem::exists(kDirectory));
}

}  // namespace
}  // namespace orbsimtest
