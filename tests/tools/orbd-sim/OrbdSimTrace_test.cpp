// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

// The connections of the daemon stand-in in a trace, and the log line of each fault.

#include "OrbdSimClient.h"
#include "OrbdSimTraceLines.h"
#include "orbsim/Faults.h"

namespace orbsimtest {
namespace {

class OrbdSimTraceTest : public OrbdSimTest {
 protected:
  void startTraced() {
    Options options;
    options.trace = lines.sink();
    options.log = log.sink();
    options.reportInterval = std::chrono::milliseconds(0);
    startDaemon(options);
  }
  void prepare(const std::string& list) {
    startTraced();
    orbsim::Faults faults;
    std::string error;
    ASSERT_TRUE(faults.parse(list, error)) << error;
    faults.prepare(daemon());
  }
  std::string head(const char* direction, uint32_t endpoint) const {
    return std::string(direction) + " connection 1 pid " + std::to_string(::getpid()) +
           " endpoint " + std::to_string(endpoint) + " session 1 ";
  }
  void TearDown() override {
    mDaemon.reset();
    OrbdSimTest::TearDown();
  }

  TraceLines lines;
  LogLines log;
};

TEST_F(OrbdSimTraceTest, SessionIsTracedFromItsFirstRecord) {
  startTraced();
  {
    Client client(path());
    client.handshake();
    client.answerTo(enable(true));
  }
  ASSERT_TRUE(daemon().waitForConnectionsClosed(1));
  EXPECT_EQ(
      (std::vector<std::string>{
          head("to-client", 0) + "handshake init", head("to-daemon", 105) + "handshake response",
          head("to-client", 105) + "handshake complete",
          head("to-daemon", 105) + "message 5 " + kEnableText,
          head("to-client", 105) + "message 5 LCE ClientMsg event_id: STATUS_IND "
                                   "transaction_id: 0 data { status_msg { status: SUCCESS } }"}),
      lines.get());
}

TEST_F(OrbdSimTraceTest, ScriptedHandshakeIsLeftOutAndFramesAreNot) {
  startTraced();
  daemon().setHandshake([](int fd, uint32_t sessionId) {
    orbsim::HandshakeReply reply;
    return orbsim::performHandshake(fd, sessionId, reply);
  });
  Client client(path());
  client.handshake();
  client.answerTo(enable(true));
  EXPECT_EQ(head("to-daemon", 105) + "message 5 " + kEnableText, lines.get().at(0));
}

// The log reports each fault when it happens, and the trace has its bytes.
TEST_F(OrbdSimTraceTest, HandshakeFaultsSayWhatTheyDo) {
  const struct {
    const char* word;
    const char* said;
  } kFaults[] = {
      {"stop-after-init", "stop-after-init: the handshake is not completed"},
      {"half-record", "half-record: half of the first record, then the end"},
      {"wrong-id", "wrong-id: the last record names another session"},
      {"die-after-init", "die-after-init: closed after the first record"},
      {"die-after-response", "die-after-response: closed after the client's answer"},
      {"silent", "silent: no handshake"},
  };
  for (const auto& fault : kFaults) {
    LogLines said;
    Options options;
    options.log = said.sink();
    options.trace = lines.sink();
    startDaemon(options);
    orbsim::Faults faults;
    std::string error;
    ASSERT_TRUE(faults.parse(fault.word, error)) << error;
    faults.prepare(daemon());
    {
      Client client(path());
      ASSERT_TRUE(daemon().waitForConnections(1));
      if (std::string(fault.word) != "silent") client.readOnce();
      if (std::string(fault.word) == "wrong-id") {
        client.write(Client::reply(1));
        client.readOnce();
      }
    }
    ASSERT_TRUE(daemon().waitForConnectionsClosed(1));
    EXPECT_EQ(sessionOf(0) + "fault " + fault.said, said.lines().at(1));
    mDaemon.reset();
  }
  const std::vector<std::string> told = lines.get();
  const auto count = [&](const std::string& line) {
    return std::count(told.begin(), told.end(), line);
  };
  EXPECT_EQ(4, count(head("to-client", 0) + "handshake init"));
  std::string half = head("to-client", 0) +
                     "not decoded (the connection ended within a record or frame): 01000000";
  half.replace(half.find("session 1"), 9, "session 0");
  EXPECT_EQ(1, count(half));
  std::string other = head("to-client", 105) + "handshake complete";
  other.replace(other.find("session 1"), 9, "session 2");
  EXPECT_EQ(1, count(other));
}

TEST_F(OrbdSimTraceTest, AnswerFaultsSayWhatTheyDo) {
  ASSERT_NO_FATAL_FAILURE(prepare("garbage,close-after=2"));
  Client client(path());
  client.handshake();
  client.send(enable(true));
  EXPECT_EQ(Blob(16, 0xff), client.readFrame().blob());
  client.send(enable(true));
  EXPECT_EQ(Blob(16, 0xff), client.readFrame().blob());
  EXPECT_TRUE(client.atEnd());
  const std::string said =
      sessionOf(105) + "fault garbage: a request is answered with bytes that are no message";
  EXPECT_EQ((std::vector<std::string>{"listening on " + path(), sessionOf(105) + "open", said, said,
                                      sessionOf(105) + "fault close-after: closed"}),
            [this] {
              std::vector<std::string> all = log.lines();
              all.resize(5);
              return all;
            }());
}

TEST_F(OrbdSimTraceTest, FaultsWithoutAnAnswerSayWhatTheyDo) {
  ASSERT_NO_FATAL_FAILURE(prepare("no-answer"));
  {
    Client client(path());
    client.handshake();
    client.send(enable(true));
    ASSERT_TRUE(daemon().waitForFrames(1));
  }
  ASSERT_TRUE(daemon().waitForConnectionsClosed(1));
  EXPECT_EQ(sessionOf(105) + "fault no-answer: a request is left", log.lines().at(2));

  mDaemon.reset();
  ASSERT_NO_FATAL_FAILURE(prepare("no-read"));
  EXPECT_EQ("fault no-read: what clients send is not read", log.lines().back());
}

TEST_F(OrbdSimTraceTest, CutFrameSaysSoAndIsTraced) {
  ASSERT_NO_FATAL_FAILURE(prepare("cut-frame"));
  Client client(path());
  client.handshake();
  client.send(enable(true));
  EXPECT_EQ(20u, client.readExactly(48).size());
  ASSERT_TRUE(daemon().waitForConnectionsClosed(1));
  EXPECT_EQ(sessionOf(105) +
                "fault cut-frame: a request is answered with a part of a frame, then the end",
            log.lines().at(2));
  EXPECT_EQ(
      head("to-client", 105) +
          "not decoded (the connection ended within a record or frame): " + std::string(40, '0'),
      lines.get().back());
}

}  // namespace
}  // namespace orbsimtest
