// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
// A pair whose socket is being removed belongs to the next socket that is registered with it.
#include <errno.h>
#include <gtest/gtest.h>

#include <future>

#include "IpcTestSupport.h"

namespace {

using namespace ipctest;

constexpr unsigned long kPeer = 1;
constexpr unsigned int kSession = 7;
constexpr ipcMsg_t kFrame = {105, kPeer, 5, 0, kSession, 0};

// Its receiver stays in its first call until release().
struct BusyHandler : RecordingHandler {
  void handleMsg(ipcMsg_t*) override {
    if (std::exchange(hasBeenBusy, true)) return;
    entered.set_value();
    mayLeave.get_future().wait();
  }
  void release() { mayLeave.set_value(); }

  std::promise<void> entered;
  std::promise<void> mayLeave;
  bool hasBeenBusy = false;
};

class ProcessUtilsDisplacedTest : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(registerSocket(kPeer, kSession, mFormer.ours, mBusy));
    const ipcMsg_t frame = {kPeer, 105, 5, 0, kSession, 0};
    mFormer.write(&frame, sizeof frame);
    mBusy.entered.get_future().wait();
    recording::clear();
  }
  // The new socket has the pair, and keeps it when the former receiver ends.
  void expectDisplaced() {
    ASSERT_TRUE(registerSocket(kPeer, kSession, mNext.ours, mNextHandler));
    EXPECT_FALSE(hasLogged(kError, "id: 0x1, sessionId: 7 is already registered"));
    expectNextIsRegistered();
    mBusy.release();
    ASSERT_TRUE(mBusy.waitForEnd());
    EXPECT_TRUE(hasLogged(kDebug, "Notifying session 0"));
    EXPECT_FALSE(hasLogged(kDebug, "Notifying session 7"));
    EXPECT_EQ((std::vector<std::string>{"receiver " + std::to_string(mFormer.ours)}),
              mBusy.calls());
    EXPECT_TRUE(isClosed(mFormer.ours));
    expectNextIsRegistered();
    mNext.closePeer();
    ASSERT_TRUE(mNextHandler.waitForEnd());
    EXPECT_EQ((std::vector<std::string>{"session 7", "receiver " + std::to_string(mNext.ours)}),
              mNextHandler.calls());
    EXPECT_FALSE(isRegistered(kPeer, kSession));
  }
  // The socket with the pair.
  static SharedSocket registered() {
    const auto globals = getProcessUtilsGlobals();
    const ScopedLock<SharedMutex> lock(globals->mLock);
    return globals->mSockets.at({kPeer, kSession});
  }
  void expectNextIsRegistered() {
    EXPECT_TRUE(ProcessUtilsWrapper::sendMsg(nullptr, 0, 5, 0, 105, kPeer, kSession));
    EXPECT_EQ(sizeof(ipcMsg_t), mNext.read(sizeof(ipcMsg_t)).size());
    const auto globals = getProcessUtilsGlobals();
    const ScopedLock<SharedMutex> lock(globals->mLock);
    EXPECT_EQ(mNext.ours, globals->mSockets.at({kPeer, kSession})->get());
    EXPECT_EQ(1u, globals->mReceiverThreads.count({kPeer, kSession}));
  }

  SocketPair mFormer;
  SocketPair mNext;
  BusyHandler mBusy;
  RecordingHandler mNextHandler;
};

TEST_F(ProcessUtilsDisplacedTest, PairOfASocketThatIsShutDownIsTakenOver) {
  shutdown(mFormer.ours, SHUT_RDWR);
  expectDisplaced();
}

TEST_F(ProcessUtilsDisplacedTest, PairOfASocketWhosePeerIsGoneIsTakenOver) {
  mFormer.closePeer();
  expectDisplaced();
}

TEST_F(ProcessUtilsDisplacedTest, PairOfASocketWhosePeerSendsNoMoreIsTakenOver) {
  shutdown(mFormer.peer, SHUT_WR);
  expectDisplaced();
}

TEST_F(ProcessUtilsDisplacedTest, PairOfASocketWithUnreadFramesIsRefused) {
  const ipcMsg_t frame = {kPeer, 105, 5, 0, kSession, 0};
  mFormer.write(&frame, sizeof frame);
  EXPECT_FALSE(registerSocket(kPeer, kSession, mNext.ours, mNextHandler));
  EXPECT_TRUE(hasLogged(kError, "id: 0x1, sessionId: 7 is already registered"));
  EXPECT_TRUE(isOpen(mNext.ours));
  close(mNext.ours);
  mBusy.release();
  mFormer.closePeer();
  ASSERT_TRUE(mBusy.waitForEnd());
  EXPECT_EQ("session 7", mBusy.calls().front());
}

TEST_F(ProcessUtilsDisplacedTest, FormerOwnerNeitherForgetsNorUsesThePairOfTheNext) {
  const SharedSocket former = registered();
  EXPECT_TRUE(sendIpc(kFrame, *former));
  mFormer.closePeer();
  ASSERT_TRUE(registerSocket(kPeer, kSession, mNext.ours, mNextHandler));
  deregisterSocket(kPeer, kSession, former.get());
  recording::clear();
  EXPECT_FALSE(sendIpc(kFrame, *former));
  EXPECT_EQ((Entries{{kDebug, "dstProcessId: 0x1, sessionId: 7"}}), logged());
  expectNextIsRegistered();  // the first frame that it gets
  mBusy.release();
  ASSERT_TRUE(mBusy.waitForEnd());
  mNext.closePeer();
  ASSERT_TRUE(mNextHandler.waitForEnd());
}

TEST_F(ProcessUtilsDisplacedTest, OwnerSendsNothingOnASocketWhosePairIsForgotten) {
  const SharedSocket socket = registered();
  deregisterSocket(kPeer, kSession);
  recording::clear();
  EXPECT_FALSE(sendIpc(kFrame, *socket));
  EXPECT_EQ((Entries{{kDebug, "dstProcessId: 0x1, sessionId: 7"}}), logged());
  char byte = 0;
  EXPECT_EQ(-1, recv(mFormer.peer, &byte, 1, MSG_DONTWAIT));
  EXPECT_EQ(EAGAIN, errno);
  mBusy.release();
  mFormer.closePeer();
  ASSERT_TRUE(mBusy.waitForEnd());
}

TEST_F(ProcessUtilsDisplacedTest, OwnerSendsNothingOnceTheReceiverHasEnded) {
  const SharedSocket socket = registered();
  mBusy.release();
  mFormer.closePeer();
  ASSERT_TRUE(mBusy.waitForEnd());
  recording::clear();
  EXPECT_FALSE(sendIpc(kFrame, *socket));
  EXPECT_EQ((Entries{{kDebug, "dstProcessId: 0x1, sessionId: 7"}}), logged());
}

}  // namespace
