// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
//
// The redirection of the daemon's socket: inside a program (this one), and loaded into an unchanged
// program.
#include <errno.h>
#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <memory>
#include <string>

#include "Built.h"
#include "Redirection.h"
#include "orbsim/Daemon.h"

namespace {

class Redirect : public testing::Test {
 protected:
  Redirect() {
    char path[] = "/tmp/orb-redirect-XXXXXX";
    EXPECT_NE(nullptr, mkdtemp(path));
    mDirectory = path;
  }
  ~Redirect() override {
    host::redirectTo(nullptr);
    std::filesystem::remove_all(mDirectory);
  }

  std::string path(const std::string& name) const { return mDirectory + "/" + name; }
  std::unique_ptr<orbsim::Daemon> daemonAt(const std::string& path) {
    orbsim::Options options;
    options.socketPath = path;
    auto daemon = std::make_unique<orbsim::Daemon>(options);
    EXPECT_TRUE(daemon->start()) << daemon->error();
    return daemon;
  }

  // The server of a connection to the daemon, or the error.
  static std::string reached() {
    sockaddr_un address = {};
    EXPECT_NE(0u, host::addressOf(host::kDaemonSocket, address));
    const int fd = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_un peer = {};
    socklen_t length = sizeof peer;
    std::string text = peer.sun_path;
    if (connect(fd, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0)
      text = "error " + std::to_string(errno);
    else if (getpeername(fd, reinterpret_cast<sockaddr*>(&peer), &length) == 0)
      text = peer.sun_path;
    close(fd);
    return text;
  }

  // The output of the probe, with standard error if requested.
  std::string probe(const std::string& variables, const char* redirection = "") const {
    const std::string command =
        "ASAN_OPTIONS=\"$ASAN_OPTIONS:verify_asan_link_order=0\" LD_PRELOAD='" +
        built(HOST_LIBREDIRECT) + "' " + variables + " '" + built(REDIRECT_PROBE) + "' " +
        redirection;
    FILE* const pipe = popen(command.c_str(), "re");
    EXPECT_NE(nullptr, pipe);
    std::string all;
    char part[512];
    for (size_t size; (size = fread(part, 1, sizeof part, pipe)) > 0;) all.append(part, size);
    EXPECT_EQ(0, pclose(pipe));
    return all;
  }
  static std::string results(const std::string& daemon, const std::string& cut) {
    const std::string absent = "error " + std::to_string(ENOENT) + "\n";
    return "with zero: " + daemon + "\nwithout zero: " + daemon + "\nand more: " + cut +
           "\nlonger: " + absent + "shorter: " + absent + "abstract: error " +
           std::to_string(ECONNREFUSED) + "\nnetwork: error " + std::to_string(EINVAL) + "\n";
  }

  std::string mDirectory;
};

TEST_F(Redirect, ProgramGoesWhereItIsToldAndBack) {
  const auto usual = daemonAt(host::kDaemonSocket);
  const auto first = daemonAt(path("first"));
  const auto second = daemonAt(path("second"));
  EXPECT_EQ(host::kDaemonSocket, reached());
  for (int round = 0; round < 2; ++round) {
    host::redirectTo(path("first").c_str());
    EXPECT_EQ(path("first"), reached());
    host::redirectTo(path("second").c_str());
    EXPECT_EQ(path("second"), reached());
  }
  host::redirectTo(nullptr);
  EXPECT_EQ(host::kDaemonSocket, reached());
}

TEST_F(Redirect, NobodyThereIsNotTheUsualDaemon) {
  const auto usual = daemonAt(host::kDaemonSocket);
  host::redirectTo(path("nobody").c_str());
  EXPECT_EQ("error " + std::to_string(ENOENT), reached());
}

TEST_F(Redirect, PathsMayBeAsLongAsASockets) {
  const std::string longest = path(std::string(106 - mDirectory.size(), 'x'));
  ASSERT_EQ(107u, longest.size());
  const auto daemon = daemonAt(longest);
  host::redirectTo(longest.c_str());
  EXPECT_EQ(longest, reached());
  host::redirectTo((longest + "x").c_str());
  EXPECT_EQ("error " + std::to_string(ENAMETOOLONG), reached());
}

TEST_F(Redirect, PreloadedChangesTheDaemonsAddressAlone) {
  const auto usual = daemonAt(host::kDaemonSocket);
  const auto daemon = daemonAt(path("orb"));
  EXPECT_EQ(results(path("orb"), path("orb")), probe("ORB_SOCKET='" + path("orb") + "'"));
}

TEST_F(Redirect, PreloadedDoesNothingWithoutAPath) {
  const auto usual = daemonAt(host::kDaemonSocket);
  const std::string unchanged = results(host::kDaemonSocket, host::kDaemonSocket);
  EXPECT_EQ(unchanged, probe(""));
  EXPECT_EQ(unchanged, probe("ORB_SOCKET="));
}

TEST_F(Redirect, PreloadedSaysThatAPathIsTooLong) {
  const std::string tooLong = path(std::string(107 - mDirectory.size(), 'x'));
  const std::string refused = "error " + std::to_string(ENAMETOOLONG);
  EXPECT_EQ(results(refused, refused), probe("ORB_SOCKET='" + tooLong + "'", "2>/dev/null"));
  EXPECT_NE(std::string::npos,
            probe("ORB_SOCKET='" + tooLong + "'", "2>&1")
                .find("ORB_SOCKET: a socket's path has at most 107 bytes: " + tooLong + "\n"));
}

}  // namespace
