// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
// orbctl watch on a terminal: the whole screen if possible, otherwise lines.
#include <gtest/gtest.h>

#include "OrbctlProgram.h"
#include "orbsim/Daemon.h"

using namespace orbctltest;

namespace {

class OrbctlScreen : public testing::Test {
 protected:
  OrbctlScreen() {
    orbsim::Options options;
    options.reportInterval = std::chrono::milliseconds(50);
    mDaemon = std::make_unique<orbsim::Daemon>(options);
  }
  void startDaemon() { ASSERT_TRUE(mDaemon->start()) << mDaemon->error(); }
  static Setting terminal(const std::string& kind, unsigned short columns = 80,
                          std::vector<std::string> more = {}) {
    Setting setting;
    setting.terminal = true;
    setting.columns = columns;
    setting.environment = std::move(more);
    setting.environment.push_back("TERM=" + kind);
    return setting;
  }

  std::unique_ptr<orbsim::Daemon> mDaemon;
};

TEST_F(OrbctlScreen, DumbTerminalGetsLines) {
  startDaemon();
  const Result result = runOrbctl({"watch", "lce", "-n1"}, terminal("dumb"));
  EXPECT_EQ(0, result.status);
  EXPECT_TRUE(contains(result.out, " lce  status SUCCESS\r\n")) << result.out;
  EXPECT_FALSE(contains(result.out, "\x1b")) << result.out;
}

TEST_F(OrbctlScreen, JsonStaysJsonOnATerminal) {
  startDaemon();
  const Result result = runOrbctl({"watch", "lce", "-n1", "--json"}, terminal("xterm"));
  EXPECT_EQ(0, result.status);
  EXPECT_EQ('{', result.out[0]);
  EXPECT_FALSE(contains(result.out, "\x1b")) << result.out;
}

#if ORBCTL_SCREEN

constexpr char kEnter[] = "\x1b[?1049h", kLeave[] = "\x1b[?1049l", kCursor[] = "\x1b[?25h";

TEST_F(OrbctlScreen, ShowsAllServicesAndGivesTheTerminalBackAfterQ) {
  startDaemon();
  Orbctl program({"watch"}, terminal("xterm"));
  const termios before = program.terminal();
  EXPECT_TRUE(program.waitForOut(kEnter));
  EXPECT_TRUE(program.waitForOut("LCE capacity"));
  EXPECT_TRUE(program.waitForOut("LLE latency"));
  EXPECT_TRUE(program.waitForOut("LLI handoff"));
  EXPECT_TRUE(program.waitForOut("q quit"));
  EXPECT_TRUE(program.waitForOut(" Mbit/s"));
  EXPECT_TRUE(program.waitForOut("\u2192")) << program.out();  // the arrow between two technologies
  program.type("q");
  EXPECT_EQ(0, program.wait());
  EXPECT_TRUE(contains(program.out(), kLeave));
  EXPECT_TRUE(contains(program.out(), kCursor));
  const termios after = program.terminal();
  EXPECT_EQ(before.c_lflag, after.c_lflag);
  EXPECT_EQ(before.c_iflag, after.c_iflag);
  EXPECT_EQ(before.c_oflag, after.c_oflag);
}

TEST_F(OrbctlScreen, ControlCGivesTheTerminalBack) {
  Orbctl program({"watch", "lli"}, terminal("xterm"));
  EXPECT_TRUE(program.waitForOut("q quit"));
  program.type("\x03");
  EXPECT_EQ(130, program.wait());
  EXPECT_TRUE(contains(program.out(), kLeave));
  EXPECT_NE(0u, program.terminal().c_lflag & ICANON);
  EXPECT_NE(0u, program.terminal().c_lflag & ECHO);
}

TEST_F(OrbctlScreen, FollowsTheTerminalsSize) {
  startDaemon();
  Orbctl program({"watch"}, terminal("xterm", 40));
  EXPECT_TRUE(program.waitForOut("q quit"));
  EXPECT_FALSE(contains(program.out(), "units: ")) << "only wide screens have room for it";
  program.resize(160, 40);
  EXPECT_TRUE(program.waitForOut("q quit   units: Mbit/s, ms"));
  program.resize(40, 12);
  EXPECT_TRUE(program.waitForOut("orbctl"));
  program.signal(SIGTERM);
  EXPECT_EQ(128 + SIGTERM, program.wait());
}

TEST_F(OrbctlScreen, TellsOfADaemonThatGoesAndComes) {
  startDaemon();
  Orbctl program({"watch", "lce"}, terminal("xterm"));
  EXPECT_TRUE(program.waitForOut("daemon is there"));
  mDaemon->stop();
  EXPECT_TRUE(program.waitForOut("away"));
  ASSERT_TRUE(mDaemon->start());
  EXPECT_TRUE(program.waitForOut("there")) << program.out();
  program.type("Q");
  EXPECT_EQ(0, program.wait());
}

TEST_F(OrbctlScreen, WritesAFileBesideTheScreen) {
  startDaemon();
  const Result result =
      runOrbctl({"watch", "lce", "--csv", "/tmp/orbctl-screen.csv", "-n2"}, terminal("xterm"));
  EXPECT_EQ(0, result.status);
  EXPECT_LE(3u, linesOf(contentOf("/tmp/orbctl-screen.csv")).size());
  remove("/tmp/orbctl-screen.csv");
}

TEST_F(OrbctlScreen, ProblemsAreToldWhenTheTerminalIsBack) {
  startDaemon();
  const Result result = runOrbctl({"watch", "--csv", "/dev/full"}, terminal("xterm"));
  EXPECT_EQ(1, result.status);
  const size_t left = result.out.find(kLeave), told = result.out.find("orbctl watch: /dev/full: ");
  ASSERT_NE(std::string::npos, told) << result.out;
  EXPECT_LT(left, told);
}

TEST_F(OrbctlScreen, ColorsAreLeftOutWhenNotWanted) {
  startDaemon();
  const std::string green = "\x1b[32m", environment = "NO_COLOR=1";
  const auto shown = [&](std::vector<std::string> words, const Setting& setting) {
    words.insert(words.begin(), {"watch", "lce"});
    Orbctl program(words, setting);
    EXPECT_TRUE(program.waitForOut("works"));
    program.type("q");
    EXPECT_EQ(0, program.wait());
    return contains(program.out(), green);
  };
  EXPECT_TRUE(shown({}, terminal("xterm")));
  EXPECT_FALSE(shown({"--color=never"}, terminal("xterm")));
  EXPECT_FALSE(shown({}, terminal("xterm", 80, {environment})));
  EXPECT_TRUE(shown({"--color=always"}, terminal("xterm", 80, {environment})));
  EXPECT_FALSE(shown({}, terminal("vt100")));
}

TEST_F(OrbctlScreen, TerminalOfAnotherCharacterSetGetsPlainBars) {
  startDaemon();
  Orbctl program({"watch", "lle"}, terminal("xterm", 80, {"LC_ALL=C"}));
  EXPECT_TRUE(program.waitForOut(" +-"));
  EXPECT_TRUE(program.waitForOut("#"));
  program.type("q");
  EXPECT_EQ(0, program.wait());
  EXPECT_FALSE(contains(program.out(), "\u2588")) << program.out();
}

// Unchanged parts are not written again.
TEST_F(OrbctlScreen, OnlyDifferencesAreWritten) {
  startDaemon();
  Orbctl program({"watch"}, terminal("xterm"));
  EXPECT_TRUE(program.waitForOut("LLI handoff"));
  for (int i = 0; i < 3; ++i) EXPECT_TRUE(program.waitForOut("\u2588"));
  program.type("q");
  EXPECT_EQ(0, program.wait());
  const std::string& out = program.out();
  EXPECT_EQ(out.find("LLI handoff"), out.rfind("LLI handoff"));
}

#else

TEST_F(OrbctlScreen, TerminalGetsLinesWithColors) {
  startDaemon();
  const Result result = runOrbctl({"watch", "lce", "-n1"}, terminal("xterm"));
  EXPECT_EQ(0, result.status);
  EXPECT_TRUE(contains(result.out, "\x1b[32mSUCCESS\x1b[0m")) << result.out;
}

#endif

}  // namespace
