// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
// How connections end: on purpose, after a failed send, or with a successor that has the same id.
#include <poll.h>

#include <future>
#include <thread>

#include "SessionFixture.h"
#include "orbsim/Handshake.h"

namespace ipctest {
namespace {

// Any data for the session keeps its receiver in a call until release().
class OrbIpcSessionEndTest : public SessionTest {
 protected:
  void keepReceiverBusy() {
    mSession->registerForRawMessage([this](unsigned int, unsigned int, Bytes) {
      mEntered.set_value();
      mMayLeave.get_future().wait();
    });
    connectAndExpectSuccess();
    ASSERT_TRUE(mDaemon.sendFrame(1, mDaemon.headerFor(1, 20, 0), {}));
    mEntered.get_future().wait();
  }
  void release() { mMayLeave.set_value(); }

  // The log lines about the end of the session's connection, without those about the registration.
  static Entries linesOfTheEnd() {
    Entries lines;
    for (const auto& entry : logged()) {
      if (entry.second.rfind("deregister", 0) != 0) lines.push_back(entry);
    }
    return lines;
  }
  static Entries endOf(unsigned int session, int fd) {
    const std::string id = std::to_string(session);
    const std::string number = std::to_string(fd);
    return {{kDebug, "closing socket Fd " + number},
            {kDebug, "recv: len: 0"},
            {kError, "Error 1st recv"},
            {kDebug, "ipc recv error: 0 for socket " + number},
            {kDebug, "Cleaning up session " + id + ", socket " + number},
            {kDebug, "Notifying session " + id},
            {kDebug, "handleSessionEnd for session " + id},
            {kDebug, "case OrbIpcSessionEndMessage::ID: 4"}};
  }
  // errno is what the receiver had before.
  static void forgetErrno(Entries& lines) {
    for (auto& line : lines) {
      const std::string head = "ipc recv error: ";
      if (line.second.rfind(head, 0) != 0) continue;
      line.second = head + "0" + line.second.substr(line.second.find(" for socket"));
    }
  }
  void expectLinesOfTheEnd() {
    Entries lines = linesOfTheEnd();
    forgetErrno(lines);
    EXPECT_EQ(endOf(1, mFd), lines);
    EXPECT_FALSE(isRegistered(1, 1));
    EXPECT_EQ((std::vector<bool>{true}), mStatuses.all());
  }

  int mFd = -1;
  std::promise<void> mEntered;
  std::promise<void> mMayLeave;
};

TEST_F(OrbIpcSessionEndTest, CleanupSaysAllLinesAndThenForgetsTheRegistration) {
  connectAndExpectSuccess();
  mFd = lastSocket();
  recording::clear();
  mSession->cleanup();
  expectLinesOfTheEnd();
  const Entries all = logged();
  ASSERT_LE(3u, all.size());
  EXPECT_EQ((Entries{{kDebug, "deregisterSocket: ENTER"},
                     {kDebug, "deregister socket debug log"},
                     {kDebug, "deregisterSocket: EXIT"}}),
            Entries(all.end() - 3, all.end()));
}

TEST_F(OrbIpcSessionEndTest, BegunCloseSaysTheSameLines) {
  connectAndExpectSuccess();
  mFd = lastSocket();
  recording::clear();
  mSession->beginClose();
  ASSERT_TRUE(mSession->awaitReceiver(kPatience));
  expectLinesOfTheEnd();
}

// The receiver finds the session to notify, even if all other owners release it at once.
TEST_F(OrbIpcSessionEndTest, BegunCloseSaysTheSameLinesWhoeverKeepsTheSession) {
  for (unsigned int id = 1; id <= 200; ++id) {
    auto session = makeSession();
    Statuses statuses;
    connect(*session, statuses);
    ASSERT_EQ((std::vector<bool>{true}), statuses.all());
    const auto ended = session->threadSemaphore();
    const std::weak_ptr<OrbIpcClientSession> watched = session;
    session->beginClose();
    session.reset();
    ASSERT_TRUE(ended->decreaseFor(kPatience));
    ASSERT_TRUE(hasLogged(kDebug, "Notifying session " + std::to_string(id)));
    ASSERT_TRUE(hasLogged(kDebug, "handleSessionEnd for session " + std::to_string(id)));
    EXPECT_TRUE(watched.expired());
    EXPECT_EQ((std::vector<bool>{true}), statuses.all());
    recording::clear();
  }
}

TEST_F(OrbIpcSessionEndTest, ClosingOnTheReceiverSaysTheSameLines) {
  mSession->registerForRawMessage([this](unsigned int, unsigned int, Bytes) {
    mFd = lastSocket();
    recording::clear();
    mSession->cleanup();
  });
  connectAndExpectSuccess();
  const auto ended = mSession->threadSemaphore();
  ASSERT_TRUE(mDaemon.sendFrame(1, mDaemon.headerFor(1, 20, 0), {}));
  ASSERT_TRUE(ended->decreaseFor(kPatience));
  expectLinesOfTheEnd();
}

TEST_F(OrbIpcSessionEndTest, RegistrationStaysUntilTheReceiverComesBy) {
  keepReceiverBusy();
  mSession->beginClose();
  EXPECT_FALSE(mSession->awaitReceiver(std::chrono::milliseconds(0)));
  EXPECT_TRUE(isRegistered(1, 1));
  release();
  EXPECT_TRUE(mSession->awaitReceiver(kPatience));
  EXPECT_FALSE(isRegistered(1, 1));
  EXPECT_TRUE(hasLogged(kDebug, "Notifying session 1"));
  EXPECT_EQ((std::vector<bool>{true}), mStatuses.all());
}

TEST_F(OrbIpcSessionEndTest, ReceiverOfAClosedConnectionLeavesTheNextOneAlone) {
  mSession->registerForRawMessage([this](unsigned int, unsigned int, Bytes) {
    mSession->cleanup();
    connect();
  });
  connectAndExpectSuccess();
  const auto ended = mSession->threadSemaphore();
  ASSERT_TRUE(mDaemon.sendFrame(1, mDaemon.headerFor(1, 20, 0), {}));
  ASSERT_TRUE(ended->decreaseFor(kPatience));
  EXPECT_TRUE(hasLogged(kDebug, "handleSessionEnd for session 1"));
  EXPECT_EQ((std::vector<bool>{true, true}), mStatuses.all());
  EXPECT_TRUE(mSession->isConnected());
  EXPECT_TRUE(isRegistered(1, 2));
  EXPECT_TRUE(mSession->send(0, 20, {1}));
  ASSERT_TRUE(mDaemon.waitForFrames(1));
  EXPECT_EQ(2u, mDaemon.frames().at(0).header.sessionId);
}

TEST_F(OrbIpcSessionEndTest, WhoeverEndsAHandshakeFindsTheDescriptorClosed) {
  mDaemon.setHandshake([](int fd, uint32_t) {
    char byte;
    return recv(fd, &byte, 1, 0) > 0;
  });
  std::thread connector([&] { connect(); });
  ASSERT_TRUE(waitLogged(kDebug, "Connect ret: 0"));
  const int fd = lastSocket();
  ASSERT_TRUE(mDaemon.waitForConnections(1));
  mSession->cleanup();
  EXPECT_TRUE(isClosed(fd));
  connector.join();
  EXPECT_TRUE(mStatuses.all().empty());
}

TEST_F(OrbIpcSessionEndTest, NewSessionGetsTheIdOfALostOneWhoseReceiverIsBusy) {
  keepReceiverBusy();
  mDaemon.stop();  // and restarts with the first id
  ASSERT_TRUE(mDaemon.start());
  Statuses statuses;
  const auto next = makeSession();
  connect(*next, statuses);
  ASSERT_EQ((std::vector<bool>{true}), statuses.all());
  EXPECT_EQ(1u, next->sessionId());

  mSession->send(0, 66, {});  // it does not know this yet, and must not act for the other session
  EXPECT_FALSE(mSession->sendAtOnce(*std::make_shared<OrbIpcRawMessage>(0, 67, Bytes())));
  EXPECT_TRUE(next->send(0, 20, {1}));
  ASSERT_TRUE(mDaemon.waitForFrames(1));
  EXPECT_EQ(20u, mDaemon.frames().at(0).header.messageId);

  release();
  ASSERT_TRUE(mStatuses.waitForCount(2));
  EXPECT_TRUE(mSession->awaitReceiver(kPatience));
  EXPECT_EQ((std::vector<bool>{true, false}), mStatuses.all());
  EXPECT_FALSE(mSession->isConnected());
  mSession->cleanup();
  EXPECT_TRUE(isRegistered(1, 1));
  EXPECT_TRUE(next->send(0, 21, {}));
  EXPECT_TRUE(mDaemon.waitForFrames(2));
  EXPECT_EQ((std::vector<bool>{true}), statuses.all());
  next->cleanup();
}

TEST_F(OrbIpcSessionEndTest, NewSessionGetsTheIdOfAClosedOneWhoseReceiverIsBusy) {
  keepReceiverBusy();
  mSession->beginClose();
  ASSERT_TRUE(mDaemon.waitForConnectionsClosed(1));
  mDaemon.setNextSessionId(1);
  Statuses statuses;
  const auto next = makeSession();
  connect(*next, statuses);
  ASSERT_EQ((std::vector<bool>{true}), statuses.all());
  release();
  EXPECT_TRUE(mSession->awaitReceiver(kPatience));
  EXPECT_TRUE(isRegistered(1, 1));
  EXPECT_EQ((std::vector<bool>{true}), mStatuses.all());
  EXPECT_EQ((std::vector<bool>{true}), statuses.all());
  next->cleanup();
}

TEST_F(OrbIpcSessionEndTest, DaemonThatReadsNoMoreIsOneLoss) {
  mDaemon.setHandshake([](int fd, uint32_t sessionId) {
    orbsim::HandshakeReply reply;
    orbsim::sendHandshakeRecord(fd, orbsim::kHandshakeInit, sessionId);
    orbsim::readHandshakeReply(fd, reply);
    shutdown(fd, SHUT_RD);
    orbsim::sendHandshakeRecord(fd, orbsim::kHandshakeComplete, sessionId);
    pollfd end = {fd, POLLHUP, 0};
    poll(&end, 1, -1);  // nothing changes until the client disconnects
    return false;
  });
  connect();
  ASSERT_EQ((std::vector<bool>{true}), mStatuses.all());
  mSession->send(0, 20, {1});
  ASSERT_TRUE(mStatuses.waitForCount(2));
  EXPECT_TRUE(mSession->awaitReceiver(kPatience));
  EXPECT_FALSE(mSession->send(0, 20, {1}));
  EXPECT_EQ((std::vector<bool>{true, false}), mStatuses.all());
  EXPECT_TRUE(mDaemon.waitForConnectionsClosed(1));
}

// Every cleanup gets a socket together with the semaphore that the socket's last user signals.
TEST_F(OrbIpcSessionEndTest, CleanupAgainstReconnectsAlwaysEnds) {
  constexpr int kRounds = 2000;
  std::promise<void> allDone;
  std::thread rounds([&] {
    std::atomic<bool> done{false};
    std::thread cleaners[2];
    for (std::thread& cleaner : cleaners) {
      cleaner = std::thread([&] {
        while (!done) mSession->cleanup();
      });
    }
    std::thread second([&] {
      while (!done) connect();
    });
    for (int i = 0; i < kRounds; ++i) connect();
    done = true;
    second.join();
    for (std::thread& cleaner : cleaners) cleaner.join();
    allDone.set_value();
  });
  if (allDone.get_future().wait_for(std::chrono::seconds(120)) != std::future_status::ready) {
    fprintf(stderr, "a cleanup waits for a semaphore that nobody signals\n");
    abort();  // blocked threads cannot be joined
  }
  rounds.join();
  mSession->cleanup();
  EXPECT_FALSE(mSession->isConnected());
  const auto statuses = mStatuses.all();
  EXPECT_EQ(0, std::count(statuses.begin(), statuses.end(), false)) << "all ended on purpose";
}

}  // namespace
}  // namespace ipctest
