// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

// The relay between an application and a daemon: it forwards all bytes unchanged, and each side
// notices the end of the other.

#include <sys/time.h>

#include <algorithm>
#include <cerrno>
#include <thread>

#include "OrbdSimRelayFixture.h"

namespace orbsimtest {
namespace {

// Random bytes, more than all buffers hold, in both directions at once.
TEST_F(OrbdSimRelayTest, BytesPassUnchangedInBothDirections) {
  ASSERT_NO_FATAL_FAILURE(connectBoth());
  const Blob up = randomBytes(3000001), down = randomBytes(2000003);
  std::thread client([&] {
    EXPECT_EQ(up.size(), mClient.send(up, 99991));
    mClient.shutdown(SHUT_WR);
  });
  std::thread daemon([&] {
    EXPECT_EQ(down.size(), mDaemon.send(down, 12345));
    mDaemon.shutdown(SHUT_WR);
  });
  Blob gotDown;
  std::thread reader([&] { gotDown = mClient.readToEnd(); });
  const Blob gotUp = mDaemon.readToEnd();
  client.join();
  daemon.join();
  reader.join();
  EXPECT_TRUE(up == gotUp);
  EXPECT_TRUE(down == gotDown);
  mRelay->stop();
  EXPECT_TRUE(up == recorded(Direction::kToDaemon));
  EXPECT_TRUE(down == recorded(Direction::kToClient));
  EXPECT_FALSE(mTrace.lines().empty());
}

TEST_F(OrbdSimRelayTest, SideThatDoesNotReadHoldsTheOtherUp) {
  ASSERT_NO_FATAL_FAILURE(connectBoth());
  // If a socket accepts nothing for this time, it counts as full. If this is wrong, less data is
  // sent.
  const timeval limit = {0, 300000};
  ASSERT_EQ(0, ::setsockopt(mClient.fd(), SOL_SOCKET, SO_SNDTIMEO, &limit, sizeof(limit)));
  const Blob bytes = randomBytes(16 << 20);
  const size_t taken = mClient.send(bytes);
  EXPECT_LT(taken, size_t{4} << 20);
  mClient.shutdown(SHUT_WR);
  const Blob got = mDaemon.readToEnd();
  ASSERT_EQ(taken, got.size());
  EXPECT_TRUE(std::equal(got.begin(), got.end(), bytes.begin()));
}

TEST_F(OrbdSimRelayTest, ClientThatSaysNoMoreStillHears) {
  ASSERT_NO_FATAL_FAILURE(connectBoth());
  mClient.send({1, 2, 3});
  mClient.shutdown(SHUT_WR);
  EXPECT_EQ((Blob{1, 2, 3}), mDaemon.readToEnd());
  mDaemon.send({4, 5});
  EXPECT_EQ((Blob{4, 5}), mClient.read(2));
  mDaemon.close();
  EXPECT_EQ(Blob{}, mClient.readToEnd());
}

TEST_F(OrbdSimRelayTest, DaemonThatSaysNoMoreStillHears) {
  ASSERT_NO_FATAL_FAILURE(connectBoth());
  mDaemon.send({4, 5});
  mDaemon.shutdown(SHUT_WR);
  EXPECT_EQ((Blob{4, 5}), mClient.readToEnd());
  mClient.send({1, 2, 3});
  EXPECT_EQ((Blob{1, 2, 3}), mDaemon.read(3));
}

TEST_F(OrbdSimRelayTest, WhatADaemonSaidBeforeItWentArrives) {
  ASSERT_NO_FATAL_FAILURE(connectBoth());
  const Blob last = randomBytes(150000);
  mDaemon.send(last);
  mDaemon.close();
  EXPECT_TRUE(last == mClient.readToEnd());
  // Then no side accepts data, as without the relay.
  const Blob more(1000, 0);
  while (mClient.send(more) == more.size()) {
  }
  EXPECT_EQ(EPIPE, errno);
}

TEST_F(OrbdSimRelayTest, WhatAClientSaidBeforeItWentArrives) {
  ASSERT_NO_FATAL_FAILURE(connectBoth());
  const Blob last = randomBytes(150000);
  mClient.send(last);
  mClient.close();
  EXPECT_TRUE(last == mDaemon.readToEnd());
  const Blob more(1000, 0);
  while (mDaemon.send(more) == more.size()) {
  }
  EXPECT_EQ(EPIPE, errno);
}

TEST_F(OrbdSimRelayTest, DaemonThatTakesNothingMoreIsSeenByTheClient) {
  ASSERT_NO_FATAL_FAILURE(connectBoth());
  mDaemon.shutdown(SHUT_RD);
  const Blob more(1000, 0);
  while (mClient.send(more) == more.size()) {
  }
  EXPECT_EQ(EPIPE, errno);
  mDaemon.send({7});
  EXPECT_EQ((Blob{7}), mClient.read(1));
}

TEST_F(OrbdSimRelayTest, RecordingIsInOrderAndSaysWhoAndWhen) {
  ASSERT_NO_FATAL_FAILURE(connectBoth());
  mDaemon.send({1});
  mClient.read(1);
  mClient.send({2, 3});
  mDaemon.read(2);
  mDaemon.close();
  mClient.readToEnd();
  mRelay->stop();
  using Kind = RecordedEvent::Kind;
  const auto events = mEvents.all();
  std::vector<Kind> kinds;
  std::chrono::microseconds last{0};
  for (const RecordedEvent& event : events) {
    kinds.push_back(event.kind);
    EXPECT_EQ(1u, event.connection);
    EXPECT_EQ(::getpid(), event.process);
    EXPECT_LE(last, event.time);
    last = event.time;
  }
  EXPECT_EQ((std::vector<Kind>{Kind::kOpen, Kind::kBytes, Kind::kBytes, Kind::kEnd, Kind::kClosed}),
            kinds);
  EXPECT_EQ((Blob{1}), events.at(1).bytes);
  EXPECT_EQ(Direction::kToClient, events.at(1).direction);
  EXPECT_EQ((Blob{2, 3}), events.at(2).bytes);
  EXPECT_EQ(Direction::kToDaemon, events.at(2).direction);
  EXPECT_EQ(Direction::kToClient, events.at(3).direction);
}

// A session of the protocol, checked at both ends and in the trace.
TEST_F(OrbdSimRelayTest, SessionIsTracedAndServed) {
  mListener.close();
  std::filesystem::remove(daemonPath());
  Options options;
  options.socketPath = daemonPath();
  Daemon daemon(options);
  daemon.setNextSessionId(42);
  ASSERT_TRUE(daemon.start()) << daemon.error();
  {
    Client client(path());
    client.handshake();
    EXPECT_EQ(42u, client.sessionId());
    client.answerTo(enable(true));
    const Blob large = randomBytes(5 << 20);
    client.sendPayload(large, 77);
    orbsim::Frame found;
    ASSERT_TRUE(daemon.waitForFrames(2));
    EXPECT_TRUE(large == daemon.frames().at(1).payload);
  }
  ASSERT_TRUE(daemon.waitForConnectionsClosed(1));
  mRelay->stop();
  std::vector<std::string> lines = mTrace.lines();
  for (std::string& line : lines) line = line.substr(line.find(" session ") + 1);
  EXPECT_EQ((std::vector<std::string>{
                "session 42 handshake init", "session 42 handshake response",
                "session 42 handshake complete",
                "session 42 message 5 LCE ServiceMsg event_id: ENABLE transaction_id: 0 data { "
                "enable_msg { enable: true } }",
                "session 42 message 5 LCE ClientMsg event_id: STATUS_IND transaction_id: 0 data { "
                "status_msg { status: SUCCESS } }",
                "session 42 message 77 not decoded (too long to be decoded): (5242880 bytes)"}),
            lines);
}

}  // namespace
}  // namespace orbsimtest
