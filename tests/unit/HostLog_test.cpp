// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
//
// The desktop stand-in of the platform's log, opened as a shared library.
#include <errno.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/syscall.h>
#include <time.h>
#include <unistd.h>

#include <cstdio>
#include <regex>
#include <string>
#include <thread>
#include <vector>

#include "HostPlatformFixture.h"

namespace {

int threadHere() { return static_cast<int>(syscall(SYS_gettid)); }

// A line without its time.
std::string line(char level, const std::string& tag, const std::string& text,
                 int thread = threadHere()) {
  char head[160];
  std::snprintf(head, sizeof head, "%5d %5d %c %-8s: ", static_cast<int>(getpid()), thread, level,
                tag.c_str());
  return head + text + "\n";
}

// The lines without their times. A line without a time is not changed.
std::string withoutTimes(const std::string& lines) {
  static const std::regex time(R"((^|\n)\d\d:\d\d:\d\d\.\d{3} )");
  return std::regex_replace(lines, time, "$1");
}

class HostLogTest : public HostPlatformTest {
 protected:
  HostLogTest() : HostPlatformTest(HOST_LIBLOG) {}

  template <class... Values>
  void print(int level, const char* tag, const char* format, Values... values) const {
    find<int (*)(int, const char*, const char*, ...)>("__android_log_print")(level, tag, format,
                                                                             values...);
  }

  // The text on standard error during an action.
  template <class Action>
  static std::string shownBy(Action action) {
    TempFile out;
    {
      const Redirected redirected(out.fd());
      action();
    }
    return out.text();
  }
  std::string shown(int level, const std::string& text) const {
    return withoutTimes(shownBy([&] { print(level, "orb", "%s", text.c_str()); }));
  }
  // The output after one line of each level.
  std::string shownOfEachLevel() const {
    return withoutTimes(shownBy([&] {
      for (int level = 2; level <= 8; ++level) print(level, "orb", "text");
    }));
  }
  static std::string linesOf(const char* levels) {
    std::string lines;
    for (const char* level = levels; *level != '\0'; ++level) lines += line(*level, "orb", "text");
    return lines;
  }
};

// In the form of the library's records, without the date.
std::string timeOfDay() {
  timespec now = {};
  clock_gettime(CLOCK_REALTIME, &now);
  tm local = {};
  localtime_r(&now.tv_sec, &local);
  char text[32];
  std::snprintf(text, sizeof text, "%02d:%02d:%02d.%03d", local.tm_hour, local.tm_min, local.tm_sec,
                static_cast<int>(now.tv_nsec / 1000000));
  return text;
}

TEST_F(HostLogTest, LineHasProcessThreadLevelAndTag) {
  const std::string text = shownBy([&] {
    print(6, "orb", "value %d", 5);
    print(5, "a-long-tag", "text");
  });
  EXPECT_EQ(line('E', "orb", "value 5") + line('W', "a-long-tag", "text"), withoutTimes(text));
}

TEST_F(HostLogTest, LineBeginsWithLocalTime) {
  setenv("TZ", "XYZ-5:30", 1);
  tzset();
  load();
  const std::string before = timeOfDay();
  const std::string text = shownBy([&] { print(6, "orb", "text"); });
  const std::string after = timeOfDay();
  unsetenv("TZ");
  tzset();
  const std::string time = text.substr(0, text.find(' '));
  ASSERT_EQ(before.size(), time.size());
  // Midnight may be between two of them.
  EXPECT_TRUE(before <= after ? before <= time && time <= after : before <= time || time <= after)
      << before << ' ' << time << ' ' << after;
}

TEST_F(HostLogTest, LineNamesTheThreadThatWroteIt) {
  int thread = 0;
  const std::string text = shownBy([&] {
    std::thread([&] {
      thread = threadHere();
      print(6, "orb", "text");
    }).join();
  });
  EXPECT_NE(threadHere(), thread);
  EXPECT_EQ(line('E', "orb", "text", thread), withoutTimes(text));
}

TEST_F(HostLogTest, LineWithoutTagShowsTheProgram) {
  EXPECT_EQ(line('W', program_invocation_short_name, "text"),
            withoutTimes(shownBy([&] { print(5, nullptr, "text"); })));
}

TEST_F(HostLogTest, LongTextStaysWhole) {
  const std::string text(5000, 'x');
  EXPECT_EQ(line('E', "orb", text), shown(6, text));
}

TEST_F(HostLogTest, WarningsAndErrorsAreShownByDefault) {
  EXPECT_EQ(linesOf("WEF"), shownOfEachLevel());
  loadWith("ORB_LOG_LEVEL", "");
  EXPECT_EQ(linesOf("WEF"), shownOfEachLevel());
}

TEST_F(HostLogTest, ErrorsOfTheLibraryAreShownByDefaultUnlessEachRunHasThem) {
  for (const std::string usual :
       {"|ORB|OrbIpcSession::handleOrbIpcIncomingRawMessage:1 handling OrbIpcIncomingRawMessage",
        "|ORB|OrbIpcSession::handleOrbIpcIncomingRawMessage:1 DEBUG: msgId: 5",
        "|ORB|ProcessUtils::ipcReceiver:1 Error 1st recv",
        "|ORB|Log::init:225 cannot open liborbalog.so",
        "|ORB|CryptoUtil::initializeRsaEncryption:1 public_key size 426"}) {
    EXPECT_EQ("", shown(6, usual));
  }
  for (const std::string fault :
       {"|ORB|ProcessUtils::ipcReceiver:1 Error 2nd recv: errno: 5(Input/output error)",
        "|ORB|OrbIpcSession::handleOrbIpcRawMessage:1 IPC socket is not connected",
        "|ORB|Log::initLogEncryption:645 C-Logging Init failed", "epoll_wait error",
        "|without a blank", "|"}) {
    EXPECT_EQ(line('E', "orb", fault), shown(6, fault));
  }
  // A line of the application.
  EXPECT_EQ(line('E', "orb", "cannot open liborbalog.so"), shown(6, "cannot open liborbalog.so"));
}

TEST_F(HostLogTest, MistakesOfTheApplicationAreShownByDefault) {
  for (const std::string mistake :
       {"|Lce|Lce::createLceClient:1 cb function null",
        "|Lle|Lle::createLleClient:84 Cb function null",
        "|Lli|Lli::orb_lli_enable:22 Status ind function null",
        "|Lce|Lce::lceSetReportingCriteria:1 Failed to get SDK client instance",
        "|Lli|Lli::orb_lli_disable:56 Failed to get SDK instance.",
        "|Lle|Lle::orb_lle_enable:1 refused in a forked process"}) {
    EXPECT_EQ(line('D', "orb", mistake), shown(3, mistake));
  }
  EXPECT_EQ("", shown(3, "|Lce|Lce::orb_lce_enable:1 Enable"));
  EXPECT_EQ("", shown(3, "cb function null"));
}

TEST_F(HostLogTest, LevelVariableHidesWhatIsBelowAndNothingElse) {
  const struct {
    const char* level;
    const char* shown;
  } kCases[] = {{"V", "VDIWEF"},       {"D", "DIWEF"},     {"I", "IWEF"},    {"W", "WEF"},
                {"E", "EF"},           {"F", "F"},         {"S", ""},        {"e", "EF"},
                {"warning", "WEF"},    {"Warn", "WEF"},    {"info", "IWEF"}, {"error", "EF"},
                {"verbose", "VDIWEF"}, {"DEBUG", "DIWEF"}, {"fatal", "F"},   {"silent", ""}};
  for (const auto& c : kCases) {
    loadWith("ORB_LOG_LEVEL", c.level);
    EXPECT_EQ(linesOf(c.shown), shownOfEachLevel()) << c.level;
  }
  loadWith("ORB_LOG_LEVEL", "V");
  for (const int level : {0, 1}) EXPECT_EQ(line('?', "orb", "text"), shown(level, "text"));
  const std::string usual = "|ORB|Log::init:225 cannot open liborbalog.so";
  loadWith("ORB_LOG_LEVEL", "E");
  EXPECT_EQ(line('E', "orb", usual), shown(6, usual));
  EXPECT_EQ("", shown(3, "|Lle|Lle::createLleClient:84 Cb function null"));
}

TEST_F(HostLogTest, LevelThatIsNoneIsRefusedWithOneLineAndTheDefaultHolds) {
  for (const std::string level : {"loud", "?", "EE", "errors", "6"}) {
    EXPECT_EQ("ORB_LOG_LEVEL=" + level +
                  ": no level; there are verbose, debug, info, warning, error, fatal and silent, "
                  "and their first letters; warnings and errors are shown\n",
              shownBy([&] { loadWith("ORB_LOG_LEVEL", level.c_str()); }));
    EXPECT_EQ(linesOf("WEF"), shownOfEachLevel());
  }
}

TEST_F(HostLogTest, LevelVariableCountsAsItWasAtTheStart) {
  loadWith("ORB_LOG_LEVEL", "E");
  setenv("ORB_LOG_LEVEL", "S", 1);
  EXPECT_EQ(linesOf("EF"), shownOfEachLevel());
}

TEST_F(HostLogTest, TerminalGetsColorUnlessNoColorIsSet) {
  const int master = posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
  ASSERT_GE(master, 0);
  ASSERT_EQ(0, grantpt(master));
  ASSERT_EQ(0, unlockpt(master));
  const int terminal = open(ptsname(master), O_RDWR | O_NOCTTY | O_CLOEXEC);
  ASSERT_GE(terminal, 0);
  const auto printed = [&] {
    {
      const Redirected redirected(terminal);
      print(6, "orb", "text");
    }
    // A terminal may pass a line on in pieces.
    std::string text;
    char c;
    while (text.find('\n') == std::string::npos && read(master, &c, 1) == 1) text += c;
    return text;
  };
  const std::regex colored(R"(\x1b\[31m\d\d:[^\x1b]*: text\x1b\[0m\r\n)");
  const std::regex plain(R"(\d\d:[^\x1b]*: text\r\n)");
  const std::string first = printed();
  EXPECT_TRUE(std::regex_match(first, colored)) << first;
  loadWith("NO_COLOR", "1");
  const std::string second = printed();
  EXPECT_TRUE(std::regex_match(second, plain)) << second;
  close(terminal);
  close(master);
}

}  // namespace
