// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
// All possible courses of a handshake.
#include "orbsim/Handshake.h"

#include <errno.h>
#include <poll.h>

#include "SessionFixture.h"

namespace ipctest {
namespace {

using orbsim::kHandshakeComplete;
using orbsim::kHandshakeInit;
using orbsim::sendHandshakeRecord;

class HandshakeTest : public SessionTest {
 protected:
  // The daemon sends these records one by one, an INIT only after the answer to the one before.
  void connectAgainst(std::vector<std::pair<int32_t, uint32_t>> records) {
    mDaemon.setHandshake([this, records](int fd, uint32_t) {
      for (const auto& [type, id] : records) {
        if (!sendHandshakeRecord(fd, type, id)) return false;
        orbsim::HandshakeReply reply;
        if (type != kHandshakeInit) continue;
        if (!orbsim::readHandshakeReply(fd, reply)) return false;
        mReplies.push_back(reply.bytes);
      }
      return true;
    });
    connect();
  }
  void connectAgainstBytes(const Bytes& bytes) {
    mDaemon.setHandshake([bytes](int fd, uint32_t) {
      return send(fd, bytes.data(), bytes.size(), MSG_NOSIGNAL) > 0;
    });
    connect();
  }
  void expectFailed() {
    EXPECT_EQ((std::vector<bool>{false}), mStatuses.all());
    EXPECT_FALSE(mSession->isConnected());
    EXPECT_EQ(1u, countLogged(kDebug, "returning: result: 0"));
    EXPECT_EQ(1u, countLogged(kDebug, "Connect ret: 0"));  // a failed handshake is not repeated
    EXPECT_FALSE(hasLogged(kDebug, "Connect success: Handshake success"));
    EXPECT_TRUE(mDaemon.waitForConnectionsClosed(1));
    EXPECT_TRUE(noneRegistered());
  }
  void expectConnected(unsigned int sessionId) {
    EXPECT_EQ((std::vector<bool>{true}), mStatuses.all());
    EXPECT_TRUE(mSession->isConnected());
    EXPECT_EQ(sessionId, mSession->sessionId());
    EXPECT_TRUE(isRegistered(1, sessionId));
    EXPECT_EQ(1u, countLogged(kDebug, "returning: result: 1"));
    EXPECT_EQ(1u, countLogged(kDebug, "Connect success: Handshake success"));
    EXPECT_TRUE(mDaemon.waitForSessions(1));
  }

  std::vector<Bytes> mReplies;
};

TEST_F(HandshakeTest, ConfirmedIdConnects) {
  connectAgainst({{kHandshakeInit, 7}, {kHandshakeComplete, 7}});
  expectConnected(7);
  EXPECT_EQ((std::vector<Bytes>{{2, 0, 0, 0, 7, 0, 0, 0, 105, 0, 0, 0}}), mReplies);
  Entries entries;
  for (const auto& entry : logged()) {
    if (entry.second.find("sockFd: ") == std::string::npos) entries.push_back(entry);
  }
  const auto from = std::find(entries.begin(), entries.end(), Entry(kDebug, "Connect ret: 0"));
  ASSERT_GE(entries.end() - from, 9);
  EXPECT_EQ((Entries{{kDebug, "Connect ret: 0"},
                     {kDebug, "recv: len: 8"},
                     {kDebug, "handshakeEvtType: 1"},
                     {kDebug, "Received HANDSHAKE_INIT; sessionId: 7"},
                     {kDebug, "Sending HANDSHAKE_RESP"},
                     {kDebug, "recv: len: 8"},
                     {kDebug, "handshakeEvtType: 3"},
                     {kDebug, "HANDSHAKE_COMPLETE: receivedSessionId: 7"},
                     {kDebug, "returning: result: 1"}}),
            Entries(from, from + 9));
}

TEST_F(HandshakeTest, LinesAreTheConnectsAndTheHandshakesAsAWhole) {
  connectAgainst({{kHandshakeInit, 7}, {kHandshakeComplete, 7}});
  const std::vector<std::string> connect = {"OrbIpcSession::handleConnectToOrbEvent"};
  const std::vector<std::string> handshake = {"OrbIpcSession::performHandshake"};
  EXPECT_EQ(connect, sourcesOf("Connect ret: 0"));
  EXPECT_EQ(connect, sourcesOf("Connect success: Handshake success"));
  EXPECT_EQ(handshake, sourcesOf("Sending HANDSHAKE_RESP"));
  EXPECT_EQ(handshake, sourcesOf("handshakeEvtType: 3"));
  EXPECT_EQ(handshake, sourcesOf("returning: result: 1"));
}

TEST_F(HandshakeTest, ConfirmationOfAnotherIdFails) {
  connectAgainst({{kHandshakeInit, 7}, {kHandshakeComplete, 8}});
  expectFailed();
  EXPECT_TRUE(hasLogged(kDebug, "HANDSHAKE_COMPLETE: receivedSessionId: 8"));
  EXPECT_EQ(0u, mSession->sessionId());
}

TEST_F(HandshakeTest, ConfirmationWithoutProposalConnectsForIdZero) {
  connectAgainst({{kHandshakeComplete, 0}});
  expectConnected(0);
}

TEST_F(HandshakeTest, ConfirmationWithoutProposalFailsForAnyOtherId) {
  connectAgainst({{kHandshakeComplete, 7}});
  expectFailed();
  EXPECT_EQ(0u, mSession->sessionId());
}

TEST_F(HandshakeTest, LastProposalCounts) {
  connectAgainst({{kHandshakeInit, 7}, {kHandshakeInit, 9}, {kHandshakeComplete, 9}});
  expectConnected(9);
  EXPECT_EQ((std::vector<Bytes>{{2, 0, 0, 0, 7, 0, 0, 0, 105, 0, 0, 0},
                                {2, 0, 0, 0, 9, 0, 0, 0, 105, 0, 0, 0}}),
            mReplies);
}

TEST_F(HandshakeTest, FormerProposalDoesNotCount) {
  connectAgainst({{kHandshakeInit, 7}, {kHandshakeInit, 9}, {kHandshakeComplete, 7}});
  expectFailed();
}

TEST_F(HandshakeTest, LargestIdIsShownSignedAndUsedUnsigned) {
  connectAgainst({{kHandshakeInit, 0xFFFFFFFF}, {kHandshakeComplete, 0xFFFFFFFF}});
  expectConnected(0xFFFFFFFF);
  EXPECT_TRUE(hasLogged(kDebug, "Received HANDSHAKE_INIT; sessionId: -1"));
}

TEST_F(HandshakeTest, TwelveByteRecordFails) {
  connectAgainstBytes({1, 0, 0, 0, 7, 0, 0, 0, 105, 0, 0, 0});
  expectFailed();
  EXPECT_TRUE(hasLogged(kDebug, "recv: len: 12"));
  EXPECT_TRUE(hasLogged(kError, "Received data size does not match with expected size"));
}

TEST_F(HandshakeTest, CutRecordFails) {
  connectAgainstBytes({1, 0, 0, 0, 7, 0, 0});
  expectFailed();
  EXPECT_TRUE(hasLogged(kError, "Received data size does not match with expected size"));
}

TEST_F(HandshakeTest, TwoRecordsInOneReadFail) {
  connectAgainstBytes({1, 0, 0, 0, 7, 0, 0, 0, 3, 0, 0, 0, 7, 0, 0, 0});
  expectFailed();
  EXPECT_TRUE(hasLogged(kDebug, "recv: len: 16"));
}

TEST_F(HandshakeTest, AtMost1023BytesAreRead) {
  connectAgainstBytes(Bytes(2000, 1));
  expectFailed();
  EXPECT_TRUE(hasLogged(kDebug, "recv: len: 1023"));
  EXPECT_TRUE(hasLogged(kError, "Received data size does not match with expected size"));
}

TEST_F(HandshakeTest, UnknownTypeFails) {
  connectAgainst({{9, 7}});
  expectFailed();
  EXPECT_TRUE(hasLogged(kDebug, "handshakeEvtType: 9"));
  EXPECT_TRUE(hasLogged(kError, "Unknown handshake type"));
}

TEST_F(HandshakeTest, AnswerTypeFromTheDaemonIsUnknown) {
  connectAgainst({{orbsim::kHandshakeResp, 7}});
  expectFailed();
  EXPECT_TRUE(hasLogged(kError, "Unknown handshake type"));
}

TEST_F(HandshakeTest, DaemonClosingAtOnceFails) {
  mDaemon.setHandshake([](int, uint32_t) { return false; });
  connect();
  expectFailed();
  EXPECT_TRUE(hasLogged(kDebug, "recv: len: 0"));
  EXPECT_TRUE(hasLogged(kError, "Received data size does not match with expected size"));
}

TEST_F(HandshakeTest, DaemonClosingAfterTheAnswerFails) {
  connectAgainst({{kHandshakeInit, 7}, {99, 0}});
  EXPECT_EQ((std::vector<bool>{false}), mStatuses.all());
  EXPECT_EQ(1u, mReplies.size());
}

TEST_F(HandshakeTest, ReceiveErrorFails) {
  // Closing a socket with unread data resets the connection.
  mDaemon.setHandshake([](int fd, uint32_t sessionId) {
    sendHandshakeRecord(fd, kHandshakeInit, sessionId);
    pollfd answer = {fd, POLLIN, 0};
    poll(&answer, 1, -1);
    return false;
  });
  connect();
  expectFailed();
  EXPECT_TRUE(hasLogged(kError, "recv returns error: errno: " + std::to_string(ECONNRESET) + "(" +
                                    strerror(ECONNRESET) + ")"));
}

TEST_F(HandshakeTest, SocketIsClosedBeforeTheFailureIsReported) {
  mDaemon.setHandshake([](int fd, uint32_t) {
    sendHandshakeRecord(fd, 9, 0);
    char byte;
    return recv(fd, &byte, 1, 0) > 0;  // waits until the client has closed
  });
  bool open = true;
  mSession->connectToServer([&](bool) { open = !isClosed(lastSocket()); });
  EXPECT_FALSE(open);
}

TEST_F(HandshakeTest, SessionConnectsAfterAFailedHandshake) {
  connectAgainst({{9, 7}});
  expectFailed();
  mDaemon.setHandshake({});
  connect();
  EXPECT_EQ((std::vector<bool>{false, true}), mStatuses.all());
  EXPECT_TRUE(mSession->isConnected());
}

TEST_F(HandshakeTest, FailedHandshakesGiveTheirDescriptorsBack) {
  mDaemon.setHandshake([](int, uint32_t) { return false; });
  connect();
  ASSERT_TRUE(mDaemon.waitForConnectionsClosed(1));
  const size_t before = openDescriptors();
  for (int i = 0; i < 5; ++i) connect();
  ASSERT_TRUE(mDaemon.waitForConnectionsClosed(6));
  EXPECT_EQ(before, openDescriptors());
}

TEST_F(HandshakeTest, SecondSessionWithTheSameIdIsRefused) {
  connectAgainst({{kHandshakeInit, 7}, {kHandshakeComplete, 7}});
  expectConnected(7);
  Statuses statuses;
  auto second = makeSession();
  connect(*second, statuses);
  EXPECT_EQ((std::vector<bool>{false}), statuses.all());
  EXPECT_FALSE(second->isConnected());
  EXPECT_TRUE(hasLogged(kError, "id: 0x1, sessionId: 7 is already registered"));
  second.reset();
  EXPECT_TRUE(isRegistered(1, 7));
  EXPECT_TRUE(mSession->send(0, 20, {1}));
  EXPECT_TRUE(mDaemon.waitForFrames(1));
  EXPECT_EQ((std::vector<bool>{true}), mStatuses.all());
}

}  // namespace
}  // namespace ipctest
