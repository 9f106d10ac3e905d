// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
// The functions that the client session adds: the daemon as peer, and one callback for every
// change.
#include <cstdio>
#include <future>
#include <thread>

#include "SessionFixture.h"

namespace ipctest {
namespace {

using OrbIpcClientSessionTest = SessionTest;

std::string address(const void* object) {
  char text[16];
  snprintf(text, sizeof text, "%x", static_cast<unsigned int>(reinterpret_cast<uintptr_t>(object)));
  return text;
}

TEST_F(OrbIpcClientSessionTest, SaysWhenItComesAndGoes) {
  recording::clear();
  auto session = makeSession();
  const std::string at = address(session.get());
  EXPECT_EQ((Entries{{kInfo, "ctor[" + at + "]"}}), logged());
  recording::clear();
  session.reset();
  ASSERT_FALSE(logged().empty());
  EXPECT_EQ(Entry(kInfo, "dtor: ENTER[ " + at + "]"), logged().at(0));
  EXPECT_EQ(0u,
            recording::texts().at(0).rfind("|ORB|OrbIpcClientSession::~OrbIpcClientSession:", 0));
}

TEST_F(OrbIpcClientSessionTest, ReportsTheResultOnTheCallersThreadBeforeItReturns) {
  std::thread::id thread;
  mSession->connectToServer([&](bool connected) {
    EXPECT_TRUE(connected);
    thread = std::this_thread::get_id();
  });
  EXPECT_EQ(std::this_thread::get_id(), thread);
  EXPECT_TRUE(hasLogged(kInfo, "notifyConnectionStatus: 1"));
}

TEST_F(OrbIpcClientSessionTest, ReportsTheLossOnTheReceiverThread) {
  std::promise<std::thread::id> lost;
  mSession->connectToServer([&](bool connected) {
    if (!connected) lost.set_value(std::this_thread::get_id());
  });
  ASSERT_TRUE(mDaemon.waitForSessions(1));
  const auto ended = mSession->threadSemaphore();
  mDaemon.closeSession(1);
  EXPECT_NE(std::this_thread::get_id(), lost.get_future().get());
  EXPECT_TRUE(hasLogged(kInfo, "notifyConnectionStatus: 0"));
  EXPECT_TRUE(ended->decreaseFor(kPatience));
}

TEST_F(OrbIpcClientSessionTest, WithoutACallbackItOnlyLogs) {
  mSession->connectToServer(nullptr);
  EXPECT_TRUE(mSession->isConnected());
  EXPECT_TRUE(hasLogged(kInfo, "notifyConnectionStatus: 1"));
}

TEST_F(OrbIpcClientSessionTest, SecondConnectReplacesTheCallbackOnly) {
  connectAndExpectSuccess();
  Statuses other;
  connect(*mSession, other);
  EXPECT_TRUE(other.all().empty());
  EXPECT_TRUE(hasLogged(kError, "mSocketFd != -1; RETURNING!!!"));
  EXPECT_EQ(1u, mDaemon.totals().connections);
  mDaemon.closeSession(1);
  ASSERT_TRUE(other.waitForCount(1));
  EXPECT_EQ((std::vector<bool>{false}), other.all());
  EXPECT_EQ((std::vector<bool>{true}), mStatuses.all());
  mSession->awaitReceiver(kPatience);  // `other` is destroyed now
}

TEST_F(OrbIpcClientSessionTest, DestroyingAConnectedSessionCallsNobodyAndGivesAllBack) {
  const size_t before = openDescriptors();
  connectAndExpectSuccess();
  const auto ended = mSession->threadSemaphore();
  const int fd = lastSocket();
  const std::weak_ptr<OrbIpcClientSession> watched = mSession;
  mSession.reset();
  EXPECT_TRUE(watched.expired());
  EXPECT_EQ((std::vector<bool>{true}), mStatuses.all());
  EXPECT_FALSE(isRegistered(1, 1));
  EXPECT_FALSE(ended->decreaseFor(std::chrono::milliseconds(0)));  // it was already waited for
  EXPECT_TRUE(hasLogged(kDebug, "closing socket Fd " + std::to_string(fd)));
  EXPECT_FALSE(hasLogged(kInfo, "notifyConnectionStatus: 0"));
  ASSERT_TRUE(mDaemon.waitForConnectionsClosed(1));
  EXPECT_EQ(before, openDescriptors());
}

TEST_F(OrbIpcClientSessionTest, DestructionWaitsForAHandlerThatRuns) {
  std::promise<void> entered;
  std::promise<void> release;
  std::atomic<bool> left{false};
  mSession->registerForRawMessage([&](unsigned int, unsigned int, Bytes) {
    entered.set_value();
    release.get_future().wait();
    left = true;
  });
  connectAndExpectSuccess();
  const auto ended = mSession->threadSemaphore();
  ASSERT_TRUE(mDaemon.sendFrame(1, mDaemon.headerFor(1, 20, 0), {}));
  entered.get_future().wait();
  mSession.reset();  // the handler keeps it until it returns on the receiver thread
  EXPECT_FALSE(left);
  release.set_value();
  EXPECT_TRUE(ended->decreaseFor(kPatience));
  EXPECT_TRUE(left);
  EXPECT_EQ((std::vector<bool>{true}), mStatuses.all());
  EXPECT_FALSE(isRegistered(1, 1));
}

TEST_F(OrbIpcClientSessionTest, DestroyedInItsOwnLossReport) {
  std::promise<void> mayGo;
  mSession->connectToServer([&](bool connected) {
    if (connected) return;
    mayGo.get_future().wait();
    mSession.reset();
  });
  const auto ended = mSession->threadSemaphore();
  ASSERT_TRUE(mDaemon.waitForSessions(1));
  mDaemon.closeSession(1);
  mayGo.set_value();
  ASSERT_TRUE(ended->decreaseFor(kPatience));
  EXPECT_EQ(nullptr, mSession);
  EXPECT_FALSE(isRegistered(1, 1));
}

TEST_F(OrbIpcClientSessionTest, ManyConnectionsLeaveNothingBehind) {
  connectAndExpectSuccess();
  mSession.reset();
  ASSERT_TRUE(mDaemon.waitForConnectionsClosed(1));
  const size_t before = openDescriptors();
  for (int i = 0; i < 50; ++i) {
    Statuses statuses;
    auto session = makeSession();
    connect(*session, statuses);
    EXPECT_EQ((std::vector<bool>{true}), statuses.all());
  }
  ASSERT_TRUE(mDaemon.waitForConnectionsClosed(51));
  EXPECT_EQ(before, openDescriptors());
}

TEST_F(OrbIpcClientSessionTest, WithAThreadOfItsOwnItConnectsThere) {
  auto session = makeSession(true);
  std::promise<std::thread::id> connected;
  session->connectToServer([&](bool) { connected.set_value(std::this_thread::get_id()); });
  EXPECT_NE(std::this_thread::get_id(), connected.get_future().get());
  EXPECT_TRUE(hasLogged(kDebug, "running infinite loop"));
  session.reset();
  EXPECT_TRUE(hasLogged(kDebug, "IpcHandler stop called"));
  EXPECT_FALSE(isRegistered(1, 1));
}

}  // namespace
}  // namespace ipctest
