// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

// The replay of recordings.

#include "OrbdSimScript.h"
#include "orbsim/Relay.h"
#include "orbsim/Replay.h"

namespace orbsimtest {
namespace {

using orbsim::Replay;
using std::chrono::microseconds;

LceProto::ClientMsg status(LceProto::Status value) {
  LceProto::ClientMsg message;
  message.mutable_data()->mutable_status_msg()->set_status(value);
  return message;
}

LceProto::ClientMsg report(uint32_t rate) {
  LceProto::ClientMsg message;
  message.set_event_id(LceProto::ESTIMATION_REPORTS_IND);
  message.mutable_data()->mutable_estimation_reports_resp()->set_rate(rate);
  return message;
}

LceProto::ClientMsg lastReport(uint32_t rate) {
  LceProto::ClientMsg message;
  message.set_event_id(LceProto::GET_LAST_ESTIMATION_REPORT_IND);
  message.mutable_data()->mutable_get_last_estimation_report_resp()->set_rate(rate);
  return message;
}

LceProto::ClientMsg criteriaResult(uint64_t transaction, const std::string& error) {
  LceProto::ClientMsg message;
  message.set_event_id(LceProto::SET_REPORTING_CRITERIA_ASYNC_RESULT);
  message.set_transaction_id(transaction);
  message.mutable_data()->mutable_set_reporting_criteria_resp()->set_error(error);
  return message;
}
using Lce = LceProto::ServiceMsg;
using Lle = LleProto::ServiceMsg;

class OrbdSimReplayTest : public OrbdSimTest {
 protected:
  void play(const std::vector<RecordedEvent>& events, double speed = 1) {
    stop();
    Options options;
    options.log = mLog.sink();
    options.socketPath = path();
    mDaemon = std::make_unique<Daemon>(options);
    mReplay = std::make_unique<Replay>(*mDaemon, events, speed);
    ASSERT_TRUE(mDaemon->start()) << mDaemon->error();
  }
  void stop() {
    if (mDaemon) mDaemon->stop();
    mReplay.reset();
  }
  void TearDown() override {
    stop();
    OrbdSimTest::TearDown();
  }
  static LceProto::ClientMsg hear(Client& client) { return parse(client.readFrame()); }
  static uint32_t rateHeard(Client& client) {
    return hear(client).data().estimation_reports_resp().rate();
  }
  bool logged(const std::string& end) {
    for (const std::string& line : mLog.lines()) {
      if (line.size() >= end.size() && line.compare(line.size() - end.size(), end.size(), end) == 0)
        return true;
    }
    return false;
  }

  LogLines mLog;
  std::unique_ptr<Replay> mReplay;
};

TEST_F(OrbdSimReplayTest, RequestsAreAnsweredAsRecordedWithTheLiveTransaction) {
  ASSERT_NO_FATAL_FAILURE(play(Script()
                                   .open()
                                   .handshake()
                                   .request(enable(true))
                                   .answer<Lce>(status(LceProto::INTERNAL_ERROR))
                                   .request(criteria(5, {}, 0))
                                   .answer<Lce>(criteriaResult(5, "first"))
                                   .request(criteria(6, {}, 0))
                                   .answer<Lce>(criteriaResult(6, "second"))
                                   .events()));
  Client client(path());
  client.handshake();
  EXPECT_EQ(9u, client.sessionId());
  client.send(enable(true));
  const Frame frame = client.readFrame();
  EXPECT_EQ(9u, frame.header.sessionId);
  EXPECT_EQ(kLcePid, frame.header.destination);
  EXPECT_EQ(1u, frame.header.source);
  EXPECT_EQ(LceProto::INTERNAL_ERROR, parse(frame).data().status_msg().status());
  for (const char* const wanted : {"first", "second"}) {
    const auto answer = client.answerTo(criteria(1234567, {}, 0));
    EXPECT_EQ(wanted, answer.data().set_reporting_criteria_resp().error());
    EXPECT_EQ(1234567u, answer.transaction_id());
  }
  EXPECT_TRUE(logged("LCE SET_REPORTING_CRITERIA: recorded, 1 to follow"));
}

// Requests that were sent before the first answer get their own answers.
TEST_F(OrbdSimReplayTest, AnswersBelongToTheirRequests) {
  ASSERT_NO_FATAL_FAILURE(play(Script()
                                   .open()
                                   .handshake()
                                   .request(enable(true))
                                   .request(criteria(5, {}, 0))
                                   .request(getLast())
                                   .answer<Lce>(status(LceProto::SUCCESS))
                                   .answer<Lce>(criteriaResult(5, "NONE"))
                                   .answer<Lce>(lastReport(77))
                                   .events()));
  Client client(path());
  client.handshake();
  EXPECT_EQ(77u, client.answerTo(getLast()).data().get_last_estimation_report_resp().rate());
  EXPECT_EQ(8u, client.answerTo(criteria(8, {}, 0)).transaction_id());
  EXPECT_EQ(LceProto::SUCCESS, client.answerTo(enable(true)).data().status_msg().status());
}

TEST_F(OrbdSimReplayTest, RequestThatWasNotRecordedSoOftenIsLeft) {
  ASSERT_NO_FATAL_FAILURE(play(Script()
                                   .open()
                                   .handshake()
                                   .request(enable(true))
                                   .answer<Lce>(status(LceProto::SUCCESS))
                                   .request(getLast())
                                   .answer<Lce>(lastReport(1))
                                   .events()));
  Client client(path());
  client.handshake();
  client.answerTo(enable(true));
  client.send(enable(true));
  client.send(action(LceProto::START));
  EXPECT_EQ(1u, client.answerTo(getLast()).data().get_last_estimation_report_resp().rate());
  EXPECT_TRUE(logged("LCE ENABLE: no recorded request is left"));
  EXPECT_TRUE(logged("LCE PERFORM_REPORTING_ACTION: no recorded request is left"));
}

// Only a lower bound: a slow machine may be late, but nothing may come early.
TEST_F(OrbdSimReplayTest, IndicationsFollowTheirRequestAtTheRecordedDistance) {
  ASSERT_NO_FATAL_FAILURE(play(Script()
                                   .at(5000)
                                   .open()
                                   .handshake()
                                   .at(7000)
                                   .request(action(LceProto::START))
                                   .at(7040)
                                   .answer<Lce>(report(1))
                                   .at(7090)
                                   .answer<Lce>(report(2))
                                   .answer<Lce>(report(3))
                                   .events()));
  Client client(path());
  client.handshake();
  const auto start = std::chrono::steady_clock::now();
  const auto passed = [start] { return std::chrono::steady_clock::now() - start; };
  client.send(action(LceProto::START));
  EXPECT_EQ(1u, rateHeard(client));
  EXPECT_LE(std::chrono::milliseconds(40), passed());
  EXPECT_EQ(2u, rateHeard(client));
  EXPECT_LE(std::chrono::milliseconds(90), passed());
  EXPECT_EQ(3u, rateHeard(client));
}

TEST_F(OrbdSimReplayTest, SpeedDividesTheDistances) {
  // Without the speed, half an hour would exceed the time limit of the test.
  ASSERT_NO_FATAL_FAILURE(play(Script()
                                   .open()
                                   .handshake()
                                   .request(action(LceProto::START))
                                   .at(1800000)
                                   .answer<Lce>(report(1))
                                   .events(),
                               1000));
  Client client(path());
  client.handshake();
  const auto start = std::chrono::steady_clock::now();
  client.send(action(LceProto::START));
  EXPECT_EQ(1u, rateHeard(client));
  EXPECT_LE(std::chrono::milliseconds(1800), std::chrono::steady_clock::now() - start);
}

TEST_F(OrbdSimReplayTest, EndOfTheDaemonIsPlayed) {
  ASSERT_NO_FATAL_FAILURE(play(Script()
                                   .open()
                                   .handshake()
                                   .request(enable(true))
                                   .answer<Lce>(status(LceProto::SUCCESS))
                                   .said({1, 2, 3})
                                   .end(Direction::kToClient)
                                   .open()
                                   .handshake()
                                   .end(Direction::kToClient)
                                   .events()));
  Client client(path());
  client.handshake();
  EXPECT_EQ(LceProto::SUCCESS, client.answerTo(enable(true)).data().status_msg().status());
  EXPECT_EQ((Blob{1, 2, 3}), client.readExactly(10));
  Client second(path());
  second.handshake();
  EXPECT_TRUE(second.atEnd());
}

// If the client ended the recorded connection, the replay does not end it.
TEST_F(OrbdSimReplayTest, EndOfTheClientIsNotPlayed) {
  ASSERT_NO_FATAL_FAILURE(play(Script()
                                   .open()
                                   .handshake()
                                   .request(enable(true))
                                   .end(Direction::kToDaemon)
                                   .end(Direction::kToClient)
                                   .open()
                                   .events()));
  Client client(path());
  client.handshake();
  client.send(enable(true));
  ASSERT_TRUE(daemon().waitForFrames(1));
  client.send(getLast());
  ASSERT_TRUE(daemon().waitForFrames(2));
  EXPECT_FALSE(client.hasInput());
}

TEST_F(OrbdSimReplayTest, ConnectionsAreFoundByTheirEndpoint) {
  Script script(kLcePid, 3);
  script.open().handshake().request(getLast()).answer<Lce>(lastReport(11));
  script.from(kLlePid, 4).open().handshake();
  LleProto::ClientMsg answer;
  answer.set_event_id(LleProto::GET_REPORT_RESP);
  answer.mutable_data()->mutable_get_report_resp()->set_ul_latency_estimation(22);
  script.request(lleGetLast()).answer<Lle>(answer);
  ASSERT_NO_FATAL_FAILURE(play(script.events()));
  // The second client connects first: it gets the id of the first connection, and its own answers
  // with that id.
  Client lle(path(), kLlePid);
  lle.handshake();
  EXPECT_EQ(3u, lle.sessionId());
  lle.send(lleGetLast());
  const Frame heard = lle.readFrame();
  EXPECT_EQ(3u, heard.header.sessionId);
  EXPECT_EQ(kLlePid, heard.header.destination);
  EXPECT_EQ(22u, parse<Lle>(heard).data().get_report_resp().ul_latency_estimation());
  Client lce(path(), kLcePid);
  lce.handshake();
  EXPECT_EQ(11u, lce.answerTo(getLast()).data().get_last_estimation_report_resp().rate());
  // There is no third connection.
  Client third(path());
  EXPECT_TRUE(third.atEnd());
  ASSERT_TRUE(daemon().waitForConnectionsClosed(1));
  EXPECT_TRUE(logged("no recorded connection is left"));
}

TEST_F(OrbdSimReplayTest, EndpointThatWasNotRecordedIsRefused) {
  ASSERT_NO_FATAL_FAILURE(play(Script().open().handshake().events()));
  {
    Client lli(path(), kLliPid);
    lli.handshake();
    EXPECT_TRUE(lli.atEnd());
  }
  ASSERT_TRUE(daemon().waitForConnectionsClosed(1));
  EXPECT_TRUE(logged("no recorded connection of endpoint 107 is left"));
  // The existing connection is still unused.
  Client lce(path());
  lce.handshake();
  EXPECT_EQ(9u, lce.sessionId());
}

TEST_F(OrbdSimReplayTest, HandshakeThatCameToNothingDoesSoAgain) {
  Script script;
  script.open().said(words({1, 9})).asked(words({2, 9, kLcePid})).said(words({3, 10}));
  script.end(Direction::kToClient).open().end(Direction::kToClient).open().handshake();
  ASSERT_NO_FATAL_FAILURE(play(script.events()));
  Client wrong(path());
  EXPECT_EQ(words({1, 9, 3, 10}), wrong.readExactly(17));
  Client silent(path());
  EXPECT_TRUE(silent.atEnd());
  Client well(path());
  well.handshake();
  EXPECT_EQ(9u, well.sessionId());
}

// The recording of a session with the stand-in and its replay have the same bytes.
TEST_F(OrbdSimReplayTest, ReplayOfARelayedSessionSaysTheSameBytes) {
  const auto session = [](const std::string& at) {
    Client client(at);
    std::vector<Blob> heard;
    client.handshake();
    for (const auto& request :
         {enable(true), getLast(), criteria(3, {1, 2}, 2), getLast(), enable(false)}) {
      client.send(request);
      heard.push_back(client.readFrame().bytes());
    }
    return heard;
  };
  std::vector<RecordedEvent> events;
  orbsim::RelayOptions options;
  options.daemonPath = path();
  options.socketPath = mDirectory + "/relay";
  options.record = [&](const RecordedEvent& event) { events.push_back(event); };
  orbsim::Relay relay(options);
  daemon().setNextSessionId(77);
  ASSERT_TRUE(relay.start()) << relay.error();
  const std::vector<Blob> live = session(options.socketPath);
  relay.stop();
  ASSERT_NO_FATAL_FAILURE(play(events));
  EXPECT_EQ(live, session(path()));
}

}  // namespace
}  // namespace orbsimtest
