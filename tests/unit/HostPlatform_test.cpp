// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
//
// The desktop stand-ins of the platform's libraries, opened as the shared libraries they are.
#include <diag/diag.h>
#include <dlfcn.h>
#include <errno.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdint>
#include <string>
#include <vector>

namespace {

template <typename Function>
Function find(void* library, const char* symbol) {
  return reinterpret_cast<Function>(dlsym(library, symbol));
}

std::string readAll(int fd) {
  std::string all;
  char part[4096];
  for (ssize_t size; (size = pread(fd, part, sizeof part, static_cast<off_t>(all.size()))) > 0;)
    all.append(part, static_cast<size_t>(size));
  return all;
}

// A file of its own that goes with the test.
class TempFile {
 public:
  TempFile() : mFd(mkostemp(mPath, O_CLOEXEC)) { EXPECT_GE(mFd, 0); }
  ~TempFile() {
    close(mFd);
    unlink(mPath);
  }
  const char* path() const { return mPath; }
  int fd() const { return mFd; }
  std::string text() const { return readAll(mFd); }
  void write(const std::string& text) {
    EXPECT_EQ(static_cast<ssize_t>(text.size()), ::write(mFd, text.data(), text.size()));
  }

 private:
  char mPath[32] = "/tmp/orb-host-XXXXXX";
  const int mFd;
};

// Standard error goes to another descriptor while it lives.
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
  explicit HostPlatformTest(const char* path) : mLibrary(dlopen(path, RTLD_NOW | RTLD_LOCAL)) {
    EXPECT_NE(nullptr, mLibrary) << dlerror();
    for (const char* name : kVariables) unsetenv(name);
  }
  ~HostPlatformTest() override {
    for (const char* name : kVariables) unsetenv(name);
  }

  static constexpr const char* kVariables[] = {"ORB_LOG_LEVEL",       "NO_COLOR",
                                               "ORB_DIAG_FILE",       "ORB_DIAG_SOCKET",
                                               "ORB_PROPERTIES_FILE", "a_b_c"};
  void* const mLibrary;  // stays open: the libraries stay for the life of a process
};

class HostLogTest : public HostPlatformTest {
 protected:
  HostLogTest() : HostPlatformTest(HOST_LIBLOG) {}

  using Print = int (*)(int, const char*, const char*, ...);
  const Print print = find<Print>(mLibrary, "__android_log_print");

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
  } kCases[] = {{"V", "VDIWEF"}, {"D", "DIWEF"}, {"I", "IWEF"}, {"W", "WEF"},
                {"E", "EF"},     {"F", "F"},     {"S", ""},     {"", "VDIWEF"}};
  for (const auto& c : kCases) {
    setenv("ORB_LOG_LEVEL", c.level, 1);
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
    char text[200];
    const ssize_t size = read(master, text, sizeof text);
    return std::string(text, size > 0 ? static_cast<size_t>(size) : 0);
  };
  EXPECT_EQ("\033[31mE/orb     " + pid() + ": text\033[0m\r\n", printed());
  setenv("NO_COLOR", "1", 1);
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

  using Get = int (*)(const char*, char*, const char*);
  using GetBool = int8_t (*)(const char*, int8_t);
  const Get propertyGet = find<Get>(mLibrary, "property_get");
  const GetBool propertyGetBool = find<GetBool>(mLibrary, "property_get_bool");
};

TEST_F(HostPropertiesTest, MissingPropertyGivesTheDefault) {
  EXPECT_EQ("fallback", get("fallback"));
  EXPECT_EQ("", get(nullptr));
  setenv("ORB_PROPERTIES_FILE", "/nonexistent/file", 1);
  EXPECT_EQ("fallback", get("fallback"));
}

TEST_F(HostPropertiesTest, FileHasKeyValueLines) {
  TempFile file;
  file.write("# a.b.c=comment\nother=1\nnothing\na.b.c.d=2\na.b.c = first\na.b.c=a=b \n");
  setenv("ORB_PROPERTIES_FILE", file.path(), 1);
  EXPECT_EQ("a=b", get("fallback"));
}

TEST_F(HostPropertiesTest, EnvironmentComesBeforeTheFile) {
  TempFile file;
  file.write("a.b.c=file\n");
  setenv("ORB_PROPERTIES_FILE", file.path(), 1);
  EXPECT_EQ("file", get("fallback"));
  setenv("a_b_c", "environment", 1);
  EXPECT_EQ("environment", get("fallback"));
}

TEST_F(HostPropertiesTest, LongValueIsCutToWhatFits) {
  setenv("a_b_c", std::string(200, 'x').c_str(), 1);
  EXPECT_EQ(std::string(91, 'x'), get(""));
}

TEST_F(HostPropertiesTest, TruthHasFiveSpellings) {
  for (const char* text : {"1", "y", "yes", "on", "true"}) {
    setenv("a_b_c", text, 1);
    EXPECT_EQ(1, propertyGetBool("a.b.c", 0)) << text;
  }
  for (const char* text : {"0", "n", "no", "off", "false"}) {
    setenv("a_b_c", text, 1);
    EXPECT_EQ(0, propertyGetBool("a.b.c", 1)) << text;
  }
  for (const char* text : {"", "2", "True", "yess"}) {
    setenv("a_b_c", text, 1);
    EXPECT_EQ(1, propertyGetBool("a.b.c", 1)) << text;
    EXPECT_EQ(0, propertyGetBool("a.b.c", 0)) << text;
  }
}

class HostDiagTest : public HostPlatformTest {
 protected:
  HostDiagTest() : HostPlatformTest(HOST_LIBDIAG) {}

  using Status = unsigned char (*)(uint16_t);
  using Alloc = void* (*)(uint16_t, unsigned);
  using Commit = void (*)(void*);
  const Status logStatus = find<Status>(mLibrary, "log_status");
  const Alloc logAlloc = find<Alloc>(mLibrary, "log_alloc");
  const Commit logCommit = find<Commit>(mLibrary, "log_commit");
};

TEST_F(HostDiagTest, NobodyListensWithoutAFile) {
  EXPECT_EQ(0, logStatus(0x1E15));
  setenv("ORB_DIAG_FILE", "", 1);
  EXPECT_EQ(0, logStatus(0x1E15));
}

TEST_F(HostDiagTest, PacketsAreAppendedToTheFile) {
  TempFile file;
  setenv("ORB_DIAG_FILE", file.path(), 1);
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

TEST_F(HostDiagTest, PacketThatCannotBeWrittenIsDropped) {
  setenv("ORB_DIAG_FILE", "/nonexistent/file", 1);
  logCommit(logAlloc(0x1E15, 20));
  unsetenv("ORB_DIAG_FILE");
  logCommit(logAlloc(0x1E15, 20));
}

TEST_F(HostDiagTest, ImpossibleLengthsGetNoPacket) {
  EXPECT_EQ(nullptr, logAlloc(0x1E15, 11));
  EXPECT_EQ(nullptr, logAlloc(0x1E15, 0x10000));
}

TEST_F(HostDiagTest, RegistrationIsTaken) {
  using Init = unsigned char (*)(unsigned char*);
  using Register = void (*)(const void*);
  EXPECT_EQ(1, find<Init>(mLibrary, "Diag_LSM_Init")(nullptr));
  static const diagpkt_user_table_type kTable = {0, 0xFF, 0x12, 0, 0, nullptr};
  find<Register>(mLibrary, "diagpkt_tbl_reg")(&kTable);
}

}  // namespace
