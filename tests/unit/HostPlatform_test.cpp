// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
//
// The desktop stand-ins of the platform's libraries, opened as shared libraries.
#include <diag/diag.h>
#include <errno.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "Built.h"
#include "FreshLibrary.h"

namespace {

std::string readAll(int fd) {
  std::string all;
  char part[4096];
  for (ssize_t size; (size = pread(fd, part, sizeof part, static_cast<off_t>(all.size()))) > 0;)
    all.append(part, static_cast<size_t>(size));
  return all;
}

// A temporary file that is removed with the test.
class TempFile {
 public:
  TempFile() : mFd(mkostemp(mPath, O_CLOEXEC)) { EXPECT_GE(mFd, 0); }
  ~TempFile() {
    close(mFd);
    unlink(mPath);
  }
  const char* path() const { return mPath; }
  // A path that cannot exist.
  std::string below() const { return path() + std::string("/file"); }
  int fd() const { return mFd; }
  std::string text() const { return readAll(mFd); }
  void write(const std::string& text) {
    EXPECT_EQ(static_cast<ssize_t>(text.size()), ::write(mFd, text.data(), text.size()));
  }

 private:
  char mPath[32] = "/tmp/orb-host-XXXXXX";
  const int mFd;
};

// Redirects standard error to another descriptor while it lives.
class Redirected {
 public:
  explicit Redirected(int fd) : mSaved(dup(STDERR_FILENO)) { dup2(fd, STDERR_FILENO); }
  ~Redirected() {
    dup2(mSaved, STDERR_FILENO);
    close(mSaved);
  }

 private:
  const int mSaved;
};

class HostPlatformTest : public testing::Test {
 protected:
  explicit HostPlatformTest(const char* path) : mPath(built(path)) {
    for (const char* name : kVariables) unsetenv(name);
    load();
  }
  ~HostPlatformTest() override {
    for (const char* name : kVariables) unsetenv(name);
  }

  // Again, with the current environment.
  void load() { mLibrary = openFresh(mPath); }
  void loadWith(const char* variable, const char* value) {
    setenv(variable, value, 1);
    load();
  }
  template <typename Function>
  Function find(const char* symbol) const {
    return reinterpret_cast<Function>(dlsym(mLibrary, symbol));
  }

 private:
  static constexpr const char* kVariables[] = {"ORB_LOG_LEVEL",       "NO_COLOR",
                                               "ORB_DIAG_FILE",       "ORB_DIAG_SOCKET",
                                               "ORB_PROPERTIES_FILE", "a_b_c"};
  const std::string mPath;
  void* mLibrary = nullptr;
};

class HostLogTest : public HostPlatformTest {
 protected:
  HostLogTest() : HostPlatformTest(HOST_LIBLOG) {}

  template <typename... Values>
  void print(int level, const char* tag, const char* format, Values... values) const {
    find<int (*)(int, const char*, const char*, ...)>("__android_log_print")(level, tag, format,
                                                                             values...);
  }

  static std::string pid() {
    char text[16];
    std::snprintf(text, sizeof text, "(%5d)", static_cast<int>(getpid()));
    return text;
  }
};

TEST_F(HostLogTest, LinesAreInBriefFormat) {
  TempFile out;
  {
    const Redirected redirected(out.fd());
    print(3, "orb", "value %d", 5);
    print(6, "a-long-tag", "text");
  }
  EXPECT_EQ("D/orb     " + pid() + ": value 5\nE/a-long-tag" + pid() + ": text\n", out.text());
}

TEST_F(HostLogTest, LineWithoutTagShowsTheProgram) {
  TempFile out;
  {
    const Redirected redirected(out.fd());
    print(4, nullptr, "text");
  }
  EXPECT_EQ(std::string("I/") + program_invocation_short_name + pid() + ": text\n", out.text());
}

TEST_F(HostLogTest, LongTextStaysWhole) {
  TempFile out;
  const std::string text(5000, 'x');
  {
    const Redirected redirected(out.fd());
    print(3, "orb", "%s", text.c_str());
  }
  EXPECT_EQ("D/orb     " + pid() + ": " + text + "\n", out.text());
}

TEST_F(HostLogTest, LevelVariableHidesWhatIsBelow) {
  const struct {
    const char* level;
    const char* shown;
  } kCases[] = {{"V", "VDIWEF"},    {"D", "DIWEF"},     {"I", "IWEF"},   {"W", "WEF"},
                {"E", "EF"},        {"F", "F"},         {"S", ""},       {"", "VDIWEF"},
                {"e", "EF"},        {"warning", "WEF"}, {"Warn", "WEF"}, {"verbose", "VDIWEF"},
                {"DEBUG", "DIWEF"}, {"info", "IWEF"},   {"error", "EF"}, {"fatal", "F"},
                {"silent", ""}};
  for (const auto& c : kCases) {
    loadWith("ORB_LOG_LEVEL", c.level);
    TempFile out;
    {
      const Redirected redirected(out.fd());
      for (int level = 2; level <= 8; ++level) print(level, "orb", "text");
    }
    std::string expected;
    for (const char* letter = c.shown; *letter != '\0'; ++letter)
      expected += *letter + ("/orb     " + pid()) + ": text\n";
    EXPECT_EQ(expected, out.text()) << c.level;
  }
}

TEST_F(HostLogTest, LevelThatIsNoneIsRefusedWithOneLineAndAllIsShown) {
  for (const std::string level : {"loud", "?", "EE", "errors", "6"}) {
    TempFile out;
    {
      const Redirected redirected(out.fd());
      loadWith("ORB_LOG_LEVEL", level.c_str());
      print(2, "orb", "text");
    }
    EXPECT_EQ("ORB_LOG_LEVEL=" + level +
                  ": no level; there are verbose, debug, info, warning, error, fatal and silent, "
                  "and their first letters; everything is shown\nV/orb     " +
                  pid() + ": text\n",
              out.text());
  }
}

TEST_F(HostLogTest, LevelVariableCountsAsItWasAtTheStart) {
  loadWith("ORB_LOG_LEVEL", "E");
  setenv("ORB_LOG_LEVEL", "S", 1);
  TempFile out;
  {
    const Redirected redirected(out.fd());
    print(5, "orb", "text");
    print(6, "orb", "text");
  }
  EXPECT_EQ("E/orb     " + pid() + ": text\n", out.text());
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
  EXPECT_EQ("\033[31mE/orb     " + pid() + ": text\033[0m\r\n", printed());
  loadWith("NO_COLOR", "1");
  EXPECT_EQ("E/orb     " + pid() + ": text\r\n", printed());
  close(terminal);
  close(master);
}

class HostPropertiesTest : public HostPlatformTest {
 protected:
  HostPropertiesTest() : HostPlatformTest(HOST_LIBCUTILS) {}

  std::string get(const char* fallback) const {
    char value[92] = "untouched";
    const int size = propertyGet("a.b.c", value, fallback);
    EXPECT_EQ(static_cast<int>(std::string(value).size()), size);
    return value;
  }

  int propertyGet(const char* key, char* value, const char* fallback) const {
    return find<int (*)(const char*, char*, const char*)>("property_get")(key, value, fallback);
  }
  int propertyGetBool(const char* key, int8_t fallback) const {
    return find<int8_t (*)(const char*, int8_t)>("property_get_bool")(key, fallback);
  }
};

TEST_F(HostPropertiesTest, MissingPropertyGivesTheDefault) {
  EXPECT_EQ("fallback", get("fallback"));
  EXPECT_EQ("", get(nullptr));
}

TEST_F(HostPropertiesTest, FileThatCannotBeReadIsRefusedWithOneLine) {
  TempFile file, out;
  {
    const Redirected redirected(out.fd());
    loadWith("ORB_PROPERTIES_FILE", file.below().c_str());
    EXPECT_EQ("fallback", get("fallback"));
    EXPECT_EQ("fallback", get("fallback"));
    loadWith("ORB_PROPERTIES_FILE", file.path());
  }
  EXPECT_EQ("ORB_PROPERTIES_FILE=" + file.below() + ": " + strerror(ENOTDIR) + "\n", out.text());
}

TEST_F(HostPropertiesTest, FileHasKeyValueLines) {
  TempFile file;
  file.write("# a.b.c=comment\nother=1\nnothing\na.b.c.d=2\na.b.c = first\na.b.c=a=b \n");
  loadWith("ORB_PROPERTIES_FILE", file.path());
  EXPECT_EQ("a=b", get("fallback"));
}

TEST_F(HostPropertiesTest, EnvironmentComesBeforeTheFile) {
  TempFile file;
  file.write("a.b.c=file\n");
  loadWith("ORB_PROPERTIES_FILE", file.path());
  EXPECT_EQ("file", get("fallback"));
  loadWith("a_b_c", "environment");
  EXPECT_EQ("environment", get("fallback"));
}

TEST_F(HostPropertiesTest, FileIsReadByEveryCall) {
  TempFile file;
  loadWith("ORB_PROPERTIES_FILE", file.path());
  EXPECT_EQ("fallback", get("fallback"));
  file.write("a.b.c=first\n");
  EXPECT_EQ("first", get("fallback"));
  file.write("a.b.c=second\n");
  EXPECT_EQ("second", get("fallback"));
}

TEST_F(HostPropertiesTest, EnvironmentCountsAsItWasAtTheStart) {
  loadWith("a_b_c", "at the start");
  setenv("a_b_c", "later", 1);
  EXPECT_EQ("at the start", get("fallback"));
  unsetenv("a_b_c");
  EXPECT_EQ("at the start", get("fallback"));
}

TEST_F(HostPropertiesTest, LongValueIsCutToWhatFits) {
  loadWith("a_b_c", std::string(200, 'x').c_str());
  EXPECT_EQ(std::string(91, 'x'), get(""));
}

TEST_F(HostPropertiesTest, TruthHasFiveSpellings) {
  for (const char* text : {"1", "y", "yes", "on", "true"}) {
    loadWith("a_b_c", text);
    EXPECT_EQ(1, propertyGetBool("a.b.c", 0)) << text;
  }
  for (const char* text : {"0", "n", "no", "off", "false"}) {
    loadWith("a_b_c", text);
    EXPECT_EQ(0, propertyGetBool("a.b.c", 1)) << text;
  }
  for (const char* text : {"", "2", "True", "yess"}) {
    loadWith("a_b_c", text);
    EXPECT_EQ(1, propertyGetBool("a.b.c", 1)) << text;
    EXPECT_EQ(0, propertyGetBool("a.b.c", 0)) << text;
  }
}

class HostDiagTest : public HostPlatformTest {
 protected:
  HostDiagTest() : HostPlatformTest(HOST_LIBDIAG) {}

  int logStatus(uint16_t code) const {
    return find<unsigned char (*)(uint16_t)>("log_status")(code);
  }
  void* logAlloc(uint16_t code, unsigned size) const {
    return find<void* (*)(uint16_t, unsigned)>("log_alloc")(code, size);
  }
  void logCommit(void* packet) const { find<void (*)(void*)>("log_commit")(packet); }
};

TEST_F(HostDiagTest, NobodyListensWithoutAFile) {
  EXPECT_EQ(0, logStatus(0x1E15));
  loadWith("ORB_DIAG_FILE", "");
  EXPECT_EQ(0, logStatus(0x1E15));
}

TEST_F(HostDiagTest, PacketsAreAppendedToTheFile) {
  TempFile file;
  loadWith("ORB_DIAG_FILE", file.path());
  EXPECT_EQ(1, logStatus(0x1E15));
  for (uint8_t i = 1; i <= 2; ++i) {
    auto* const packet = static_cast<uint8_t*>(logAlloc(0x1E15, 14));
    ASSERT_NE(nullptr, packet);
    packet[12] = i;
    packet[13] = 0xFF;
    logCommit(packet);
  }
  const std::string bytes = file.text();
  ASSERT_EQ(28u, bytes.size());
  EXPECT_EQ(std::string("\x0E\x00\x15\x1E", 4), bytes.substr(0, 4));
  EXPECT_NE(std::string(8, '\0'), bytes.substr(4, 8));
  EXPECT_EQ("\x01\xFF", bytes.substr(12, 2));
  EXPECT_EQ(std::string("\x0E\x00\x15\x1E", 4), bytes.substr(14, 4));
  EXPECT_EQ("\x02\xFF", bytes.substr(26, 2));
}

TEST_F(HostDiagTest, PacketThatCannotBeWrittenIsDroppedAndOneLineSaysSo) {
  TempFile file, out;
  {
    const Redirected redirected(out.fd());
    loadWith("ORB_DIAG_FILE", file.below().c_str());
    logCommit(logAlloc(0x1E15, 20));
    logCommit(logAlloc(0x1E15, 20));
  }
  EXPECT_EQ("ORB_DIAG_FILE=" + file.below() + ": " + strerror(ENOTDIR) + "\n", out.text());
  unsetenv("ORB_DIAG_FILE");
  load();
  logCommit(logAlloc(0x1E15, 20));
}

TEST_F(HostDiagTest, ImpossibleLengthsGetNoPacket) {
  EXPECT_EQ(nullptr, logAlloc(0x1E15, 11));
  EXPECT_EQ(nullptr, logAlloc(0x1E15, 0x10000));
}

TEST_F(HostDiagTest, RegistrationIsTaken) {
  using Init = unsigned char (*)(unsigned char*);
  using Register = void (*)(const void*);
  EXPECT_EQ(1, find<Init>("Diag_LSM_Init")(nullptr));
  static const diagpkt_user_table_type kTable = {0, 0xFF, 0x12, 0, 0, nullptr};
  find<Register>("diagpkt_tbl_reg")(&kTable);
}

}  // namespace
