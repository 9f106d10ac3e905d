// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

// The daemon stand-in's sockets: handshake, frames, scripts, sessions and their end.

#include <sys/stat.h>

#include <cerrno>
#include <cstring>
#include <future>
#include <thread>

#include "Descriptors.h"
#include "OrbdSimClient.h"
#include "orbsim/Handshake.h"

namespace orbsimtest {
namespace {

TEST_F(OrbdSimTest, EachHandshakeRecordIsEightBytesInOnePiece) {
  Client client(path());
  EXPECT_EQ((Blob{1, 0, 0, 0, 1, 0, 0, 0}), client.readOnce());
  client.write(Client::reply(1));
  EXPECT_EQ((Blob{3, 0, 0, 0, 1, 0, 0, 0}), client.readOnce());
  ASSERT_TRUE(daemon().waitForSessions(1));
  EXPECT_EQ((std::vector<Blob>{{2, 0, 0, 0, 1, 0, 0, 0, 105, 0, 0, 0}}),
            daemon().handshakeReplies());
}

TEST_F(OrbdSimTest, HandshakeReplyInPiecesIsAccepted) {
  Client client(path());
  client.readOnce();
  const Blob reply = Client::reply(1);
  client.write({reply.begin(), reply.begin() + 5});
  client.write({reply.begin() + 5, reply.end()});
  EXPECT_EQ(8u, client.readOnce().size());
}

TEST_F(OrbdSimTest, ReplyWithAnotherSessionIdEndsTheConnection) {
  Client client(path());
  client.readOnce();
  client.write(Client::reply(2));
  EXPECT_TRUE(client.atEnd());
  ASSERT_TRUE(daemon().waitForConnectionsClosed(1));
  EXPECT_EQ(0u, daemon().totals().sessions);
  EXPECT_EQ((std::vector<Blob>{Client::reply(2)}), daemon().handshakeReplies());
}

TEST_F(OrbdSimTest, SessionIdsCountFromOneAndCanBeScripted) {
  Client first(path());
  first.handshake();
  Client second(path());
  second.handshake();
  daemon().setNextSessionId(0xFFFFFFFF);
  Client third(path());
  third.handshake();
  EXPECT_EQ(1u, first.sessionId());
  EXPECT_EQ(2u, second.sessionId());
  EXPECT_EQ(0xFFFFFFFFu, third.sessionId());
  ASSERT_TRUE(daemon().waitForSessions(3));
  EXPECT_EQ((std::vector<uint32_t>{1, 2, 0xFFFFFFFF}), daemon().sessionIds());
}

TEST_F(OrbdSimTest, HandshakeScriptReplacesTheHandshake) {
  daemon().setHandshake([](int fd, uint32_t sessionId) {
    return orbsim::sendHandshakeRecord(fd, 9, sessionId + 100);
  });
  Client client(path());
  EXPECT_EQ((Blob{9, 0, 0, 0, 101, 0, 0, 0}), client.readOnce());
  ASSERT_TRUE(daemon().waitForSessions(1));
  // Without a handshake, the endpoint number comes from the first frame.
  client.send(enable(true));
  EXPECT_EQ(kLcePid, client.readFrame().header.destination);
}

TEST_F(OrbdSimTest, HandshakeScriptThatFailsEndsTheConnection) {
  daemon().setHandshake([](int, uint32_t) { return false; });
  Client client(path());
  EXPECT_TRUE(client.atEnd());
  ASSERT_TRUE(daemon().waitForConnectionsClosed(1));
  EXPECT_EQ(0u, daemon().totals().sessions);
}

TEST_F(OrbdSimTest, FramesAreRecordedByteForByte) {
  Client client(path());
  client.handshake();
  client.send(enable(true));
  client.sendPayload({}, 77);
  ASSERT_TRUE(daemon().waitForFrames(2));
  const std::vector<Frame> frames = daemon().frames();
  const Blob enableBytes = {
      105, 0, 0, 0, 0,    0, 0,    0, 1,  0, 0, 0, 0, 0, 0, 0,  // from, to
      5,   0, 0, 0, 0,    0, 0,    0, 0,  0, 0, 0, 0, 0, 0, 0,  // message, subsystem
      1,   0, 0, 0, 0,    0, 0,    0, 10, 0, 0, 0, 0, 0, 0, 0,  // session, length
      7,   0, 0, 0, 0x1A, 4, 0x0A, 2, 8,  1};
  EXPECT_EQ(enableBytes, frames[0].bytes());
  EXPECT_EQ(1u, frames[0].sessionId);
  EXPECT_EQ(orbsim::kSdkTypeLce, frames[0].sdkType());
  EXPECT_EQ(serialize(enable(true)), frames[0].blob());
  EXPECT_EQ(77u, frames[1].header.messageId);
  EXPECT_TRUE(frames[1].payload.empty());
  EXPECT_FALSE(frames[1].isBlob());
}

TEST_F(OrbdSimTest, FramesMayComeInAnyPieces) {
  Client client(path());
  client.handshake();
  const Blob payload = orbsim::encodeBlobPayload(orbsim::kSdkTypeLce, serialize(enable(true)));
  const Blob one = orbsim::encodeFrame(client.header(5, payload.size()), payload);
  Blob stream = one;
  stream.insert(stream.end(), one.begin(), one.end());
  for (const uint8_t byte : stream) client.write({byte});
  EXPECT_EQ(LceProto::STATUS_IND, parse(client.readFrame()).event_id());
  EXPECT_EQ(LceProto::STATUS_IND, parse(client.readFrame()).event_id());
  EXPECT_EQ(2u, daemon().totals().frames);
}

TEST_F(OrbdSimTest, UnknownServiceAndUnknownMessageAreIgnored) {
  Client client(path());
  client.handshake();
  client.sendPayload({200, 0, 0, 0});
  client.sendPayload({7, 0, 0});
  client.sendPayload({1, 2, 3}, 6);
  EXPECT_EQ(LceProto::STATUS_IND, client.answerTo(enable(true)).event_id());
  EXPECT_EQ(4u, daemon().totals().frames);
}

TEST_F(OrbdSimTest, FrameHandlerMayTakeFramesOver) {
  daemon().setFrameHandler([](orbsim::Session& session, const Frame& frame) {
    if (frame.header.messageId != 9) return false;
    return session.sendFrame(session.headerFor(10, frame.payload.size()), frame.payload);
  });
  Client client(path());
  client.handshake();
  client.sendPayload({1, 2, 3}, 9);
  const Frame echo = client.readFrame();
  EXPECT_EQ(10u, echo.header.messageId);
  EXPECT_EQ((Blob{1, 2, 3}), echo.payload);
  EXPECT_EQ(LceProto::STATUS_IND, client.answerTo(enable(true)).event_id());
}

TEST_F(OrbdSimTest, ScriptedFramesGoOutAsGiven) {
  Client client(path());
  client.handshake();
  ASSERT_TRUE(daemon().waitForSessions(1));
  Header header = daemon().headerFor(1, 42, 3);
  header.subsystemId = -7;
  ASSERT_TRUE(daemon().sendFrame(1, header, {9, 8, 7}));
  const Frame frame = client.readFrame();
  EXPECT_EQ(42u, frame.header.messageId);
  EXPECT_EQ(-7, frame.header.subsystemId);
  EXPECT_EQ((Blob{9, 8, 7}), frame.payload);
  ASSERT_TRUE(daemon().sendBlob(1, orbsim::kSdkTypeLli, {0xAA}));
  EXPECT_EQ((Blob{9, 0, 0, 0, 0xAA}), client.readFrame().payload);
  ASSERT_TRUE(daemon().sendBytes(1, {5, 5}));
  EXPECT_EQ((Blob{5, 5}), client.readOnce());
  EXPECT_FALSE(daemon().sendBlob(2, orbsim::kSdkTypeLce, {}));
}

TEST_F(OrbdSimTest, ClosedSessionShowsAsTheEndToTheClient) {
  Client first(path());
  first.handshake();
  Client second(path());
  second.handshake();
  ASSERT_TRUE(daemon().waitForSessions(2));
  ASSERT_TRUE(daemon().closeSession(1));
  EXPECT_TRUE(first.atEnd());
  ASSERT_TRUE(daemon().waitForSessionsClosed(1));
  EXPECT_EQ((std::vector<uint32_t>{2}), daemon().sessionIds());
  EXPECT_FALSE(daemon().closeSession(1));
  daemon().closeAll();
  EXPECT_TRUE(second.atEnd());
  ASSERT_TRUE(daemon().waitForSessionsClosed(2));
  EXPECT_EQ(0u, daemon().sessionCount());
}

TEST_F(OrbdSimTest, ClientThatLeavesEndsItsSessionAfterItsLastFrame) {
  Client client(path());
  client.handshake();
  client.send(enable(false));
  client.close();
  ASSERT_TRUE(daemon().waitForSessionsClosed(1));
  EXPECT_EQ(1u, daemon().totals().frames);
}

TEST_F(OrbdSimTest, UnreadInputOutlivesTheClient) {
  daemon().setReading(false);
  Client client(path());
  client.handshake();
  ASSERT_TRUE(daemon().waitForSessions(1));
  client.send(enable(false));
  client.close();
  daemon().setReading(true);
  ASSERT_TRUE(daemon().waitForFrames(1));
  ASSERT_TRUE(daemon().waitForSessionsClosed(1));
}

TEST_F(OrbdSimTest, RestartedDaemonIsFoundAgainAndCountsFromOne) {
  Client before(path());
  before.handshake();
  daemon().stop();
  EXPECT_TRUE(before.atEnd());
  EXPECT_FALSE(daemon().running());
  EXPECT_FALSE(Client(path()).connected());
  ASSERT_TRUE(daemon().start()) << daemon().error();
  Client after(path());
  after.handshake();
  EXPECT_EQ(1u, after.sessionId());
  EXPECT_EQ(LceProto::STATUS_IND, after.answerTo(enable(true)).event_id());
  EXPECT_EQ(2u, daemon().totals().sessions);
}

TEST_F(OrbdSimTest, KilledListenerRefusesNewClientsAndKeepsSessions) {
  Client client(path());
  client.handshake();
  daemon().killListener();
  EXPECT_FALSE(Client(path()).connected());
  EXPECT_EQ(LceProto::STATUS_IND, client.answerTo(enable(true)).event_id());
  daemon().stop();
  ASSERT_TRUE(daemon().start()) << daemon().error();
  EXPECT_TRUE(Client(path()).connected());
}

TEST_F(OrbdSimTest, NotAcceptingLeavesClientsInTheBacklog) {
  daemon().setAccepting(false);
  Client client(path());
  EXPECT_TRUE(client.connected());
  EXPECT_EQ(0u, daemon().totals().connections);
  daemon().setAccepting(true);
  client.handshake();
  EXPECT_EQ(1u, daemon().totals().connections);
}

TEST_F(OrbdSimTest, StopDoesNotWaitForClientsThatDoNotReadOrDoNotSpeak) {
  Client mute(path());  // never answers the handshake
  Client deaf(path());
  deaf.handshake();
  ASSERT_TRUE(daemon().waitForSessions(1));
  const uint32_t id = deaf.sessionId();
  const Blob large(1 << 20);
  while (daemon().queuedBytes(id) == 0) {
    ASSERT_TRUE(daemon().sendBlob(id, orbsim::kSdkTypeLce, large));
  }
  daemon().stop();
  EXPECT_EQ(2u, daemon().totals().connectionsClosed);
}

TEST_F(OrbdSimTest, QueueForClientThatDoesNotReadIsBounded) {
  Options options;
  options.maxQueuedBytes = 4096;
  startDaemon(options);
  Client client(path());
  client.handshake();
  ASSERT_TRUE(daemon().waitForSessions(1));
  EXPECT_FALSE(daemon().sendBytes(1, Blob(4097)));
  size_t accepted = 0;
  while (daemon().sendBytes(1, Blob(1024))) accepted += 1024;
  EXPECT_EQ(accepted, client.readExactly(accepted).size());
}

TEST_F(OrbdSimTest, QueuedBytesArriveWholeAndInOrder) {
  Client client(path());
  client.handshake();
  ASSERT_TRUE(daemon().waitForSessions(1));
  constexpr uint8_t kFrames = 200;
  for (uint8_t i = 0; i < kFrames; ++i) {
    ASSERT_TRUE(daemon().sendBlob(1, orbsim::kSdkTypeLce, Blob(10000, i)));
  }
  for (uint8_t i = 0; i < kFrames; ++i) ASSERT_EQ(Blob(10000, i), client.readFrame().blob());
}

TEST_F(OrbdSimTest, StaleSocketIsReplacedAndLiveOneIsNot) {
  Options options;
  options.socketPath = path();
  Daemon second(options);
  EXPECT_FALSE(second.start());
  EXPECT_EQ("cannot listen on " + path() + ": somebody listens there already", second.error());
  EXPECT_TRUE(Client(path()).connected());

  daemon().stop();
  const int stale = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_un address = {};
  address.sun_family = AF_UNIX;
  std::memcpy(address.sun_path, path().c_str(), path().size() + 1);
  ASSERT_EQ(0, ::bind(stale, reinterpret_cast<sockaddr*>(&address), sizeof(address)));
  ::close(stale);
  EXPECT_TRUE(second.start()) << second.error();
}

TEST_F(OrbdSimTest, SocketIsOpenToEveryUser) {
  struct stat status = {};
  ASSERT_EQ(0, ::stat(path().c_str(), &status));
  EXPECT_EQ(0666u, status.st_mode & 0777u);
}

TEST_F(OrbdSimTest, ManySessionsAreServedAtOnce) {
  constexpr int kClients = 16;
  std::vector<std::thread> threads;
  for (int i = 0; i < kClients; ++i) {
    threads.emplace_back([this, i] {
      Client client(path());
      client.handshake();
      for (uint64_t n = 1; n <= 100; ++n) {
        const uint64_t transaction = n * 1000 + static_cast<uint64_t>(i);
        ASSERT_EQ(transaction, client.answerTo(criteria(transaction, {}, 0)).transaction_id());
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  ASSERT_TRUE(daemon().waitForSessionsClosed(kClients));
  EXPECT_EQ(kClients * 100u, daemon().totals().frames);
}

TEST_F(OrbdSimTest, EndedSessionsLeaveNoDescriptorsBehind) {
  const size_t before = openDescriptors();
  for (size_t i = 1; i <= 50; ++i) {
    {
      Client client(path());
      client.handshake();
    }
    ASSERT_TRUE(daemon().waitForConnectionsClosed(i));
  }
  EXPECT_EQ(before, openDescriptors());
}

TEST_F(OrbdSimTest, RefusedFrameLengthEndsTheSession) {
  Client client(path());
  client.handshake();
  client.write(orbsim::encodeFrame(client.header(5, ~size_t{0}), {}));
  EXPECT_TRUE(client.atEnd());
  EXPECT_EQ(0u, daemon().totals().frames);
}

TEST_F(OrbdSimTest, WaitForFrameGivesTheWantedOne) {
  std::future<Frame> found = std::async(std::launch::async, [this] {
    Frame frame;
    EXPECT_TRUE(
        daemon().waitForFrame([](const Frame& f) { return f.header.messageId == 12; }, &frame));
    return frame;
  });
  Client client(path());
  client.handshake();
  client.sendPayload({1}, 11);
  client.sendPayload({2}, 12);
  EXPECT_EQ((Blob{2}), found.get().payload);
  EXPECT_FALSE(daemon().waitForFrames(3, std::chrono::milliseconds(1)));
}

}  // namespace
}  // namespace orbsimtest
