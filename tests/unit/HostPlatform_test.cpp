// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
//
// The desktop stand-ins of the platform's properties and of its diagnostic channel, opened as
// shared libraries.
#include <diag/diag.h>
#include <errno.h>
#include <gtest/gtest.h>
#include <stdlib.h>

#include <cstdint>
#include <cstring>
#include <string>

#include "HostPlatformFixture.h"

namespace {

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
