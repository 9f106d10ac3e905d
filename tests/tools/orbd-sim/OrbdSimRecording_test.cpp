// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

// Recordings as files.

#include <fstream>

#include "OrbdSimScript.h"

namespace orbsimtest {
namespace {

class OrbdSimRecordingTest : public OrbdSimTest {
 protected:
  std::string file() const { return mDirectory + "/recording"; }
  std::string errorOf(const std::string& text) const {
    std::ofstream(file()) << text;
    std::vector<RecordedEvent> events;
    std::string error;
    EXPECT_FALSE(orbsim::readRecording(file(), events, error)) << text;
    EXPECT_EQ(0u, error.find(file() + ":")) << error;
    return error.substr(file().size() + 1);
  }
};

TEST_F(OrbdSimRecordingTest, WhatIsWrittenIsRead) {
  const std::vector<RecordedEvent> written = Script()
                                                 .open()
                                                 .at(1)
                                                 .handshake()
                                                 .at(86400123)
                                                 .asked({0, 255, 16})
                                                 .end(Direction::kToClient)
                                                 .end(Direction::kToDaemon)
                                                 .events();
  orbsim::RecordingWriter writer;
  ASSERT_TRUE(writer.open(file())) << writer.error();
  for (const RecordedEvent& event : written) writer.write(event);
  ASSERT_EQ("", writer.error());
  std::vector<RecordedEvent> read;
  std::string error;
  ASSERT_TRUE(orbsim::readRecording(file(), read, error)) << error;
  ASSERT_EQ(written.size(), read.size());
  for (size_t i = 0; i < read.size(); ++i) {
    EXPECT_EQ(written[i].time, read[i].time);
    EXPECT_EQ(written[i].connection, read[i].connection);
    EXPECT_EQ(written[i].kind, read[i].kind);
    EXPECT_EQ(written[i].bytes, read[i].bytes);
    if (written[i].kind != RecordedEvent::Kind::kOpen) {
      EXPECT_EQ(written[i].direction, read[i].direction);
    }
  }
}

TEST_F(OrbdSimRecordingTest, FileIsAsDocumented) {
  orbsim::RecordingWriter writer;
  ASSERT_TRUE(writer.open(file()));
  RecordedEvent event;
  event.connection = 1;
  event.process = 4711;
  writer.write(event);
  event.process = 0;
  writer.write(event);
  event.time = std::chrono::microseconds(1500);
  event.kind = RecordedEvent::Kind::kBytes;
  event.direction = Direction::kToClient;
  event.bytes = {1, 0xab};
  writer.write(event);
  event.kind = RecordedEvent::Kind::kEnd;
  writer.write(event);
  event.kind = RecordedEvent::Kind::kClosed;
  writer.write(event);
  std::ifstream in(file());
  const std::string text((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
  EXPECT_EQ(
      "{\"orbd-sim-recording\":1}\n"
      "{\"time\":0.0,\"connection\":1,\"event\":\"open\",\"pid\":4711}\n"
      "{\"time\":0.0,\"connection\":1,\"event\":\"open\",\"pid\":null}\n"
      "{\"time\":0.0015,\"connection\":1,\"event\":\"bytes\",\"direction\":\"to-client\",\"bytes\":"
      "\"01ab\"}\n"
      "{\"time\":0.0015,\"connection\":1,\"event\":\"end\",\"direction\":\"to-client\"}\n"
      "{\"time\":0.0015,\"connection\":1,\"event\":\"closed\"}\n",
      text);
}

// A killed relay can leave a part of its last line.
TEST_F(OrbdSimRecordingTest, LastLineThatIsCutIsNotCounted) {
  std::ofstream(file()) << "{\"orbd-sim-recording\":1}\n"
                           "{\"time\":0,\"connection\":1,\"event\":\"open\"}\n"
                           "{\"time\":1,\"connec";
  std::vector<RecordedEvent> events;
  std::string error;
  EXPECT_TRUE(orbsim::readRecording(file(), events, error)) << error;
  EXPECT_EQ(1u, events.size());
}

TEST_F(OrbdSimRecordingTest, WhatIsNoneIsSaid) {
  const std::string head = "{\"orbd-sim-recording\":1}\n";
  const std::string missing = " a key is missing or of another type";
  EXPECT_EQ(" this is no recording", errorOf(""));
  EXPECT_EQ("1: this is no recording", errorOf("text\n"));
  EXPECT_EQ("1: this is no recording", errorOf("[]\n"));
  EXPECT_EQ("1: a recording of another version", errorOf("{\"orbd-sim-recording\":2}\n"));
  EXPECT_EQ("2: this is no JSON", errorOf(head + "{\n{}\n"));
  EXPECT_EQ("2:" + missing, errorOf(head + "{}\n"));
  EXPECT_EQ("2:" + missing, errorOf(head + "[]\n"));
  EXPECT_EQ("2:" + missing, errorOf(head + "{\"time\":\"0\",\"connection\":1}\n"));
  EXPECT_EQ("2: a time out of range", errorOf(head + "{\"time\":-1}\n"));
  EXPECT_EQ("2: a time out of range", errorOf(head + "{\"time\":1e300}\n"));
  const std::string event = head + "{\"time\":0,\"connection\":1,\"event\":";
  EXPECT_EQ("2: no such event", errorOf(event + "\"other\"}\n"));
  EXPECT_EQ("2:" + missing, errorOf(event + "\"end\"}\n"));
  EXPECT_EQ("2: no such direction", errorOf(event + "\"end\",\"direction\":\"up\"}\n"));
  const std::string bytes = event + "\"bytes\",\"direction\":\"to-client\",\"bytes\":";
  EXPECT_EQ("2: bytes that are not in hexadecimal", errorOf(bytes + "\"0\"}\n"));
  EXPECT_EQ("2: bytes that are not in hexadecimal", errorOf(bytes + "\"0g\"}\n"));
  EXPECT_EQ("2:" + missing, errorOf(bytes + "1}\n"));
}

TEST_F(OrbdSimRecordingTest, FileThatCannotBeOpenedIsNamedWithTheCause) {
  std::vector<RecordedEvent> events;
  std::string error;
  EXPECT_FALSE(orbsim::readRecording(mDirectory + "/none", events, error));
  EXPECT_EQ(mDirectory + "/none: " + strerror(ENOENT), error);
  EXPECT_FALSE(orbsim::readRecording(mDirectory, events, error));
  EXPECT_EQ(mDirectory + ": " + strerror(EISDIR), error);
  orbsim::RecordingWriter writer;
  EXPECT_FALSE(writer.open(mDirectory + "/none/file"));
  EXPECT_EQ(mDirectory + "/none/file: " + strerror(ENOENT), writer.error());
}

TEST_F(OrbdSimRecordingTest, FullDiskIsTold) {
  orbsim::RecordingWriter writer;
  EXPECT_FALSE(writer.open("/dev/full"));
  EXPECT_EQ(std::string("/dev/full: ") + strerror(ENOSPC), writer.error());
}

}  // namespace
}  // namespace orbsimtest
