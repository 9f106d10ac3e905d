// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
// A session created with a descriptor: it does not connect, its subclass registers the descriptor.
#include <gtest/gtest.h>

#include <future>
#include <thread>

#include "IpcTestSupport.h"
#include "OrbIpcSession.h"

namespace ipctest {
namespace {

using Bytes = std::vector<unsigned char>;

constexpr unsigned int kSession = 9;
constexpr unsigned long kPeer = 107;

class GivenSession : public OrbIpcSession {
 public:
  explicit GivenSession(int fd)
      : OrbIpcSession(fd, kSession, ProcessId::Daemon, ProcessId::LLI, false) {}
  ~GivenSession() override { cleanup(); }
  using OrbIpcSession::deregisterReceiverHandler;
  using OrbIpcSession::registerReceiverHandler;

  std::atomic<int> losses{0};

 protected:
  void notifyConnectionStatus(bool connected) override {
    EXPECT_FALSE(connected);
    ++losses;
  }
};

class OrbIpcSessionDescriptorTest : public ::testing::Test {
 protected:
  void SetUp() override {
    recording::clear();
    mFd = mPair.ours;
    mSession = std::make_shared<GivenSession>(mFd);
  }
  void TearDown() override {
    mSession->cleanup();  // a receiver that is still in a call keeps the session
    mSession.reset();
    EXPECT_FALSE(isRegistered(kPeer, kSession));
    EXPECT_TRUE(isClosed(mFd));
  }
  void sendFrame(uint64_t msgId) {
    const ipcMsg_t frame = {kPeer, 1, msgId, 3, kSession, 0};
    mPair.write(&frame, sizeof frame);
  }

  SocketPair mPair;
  int mFd = -1;
  std::shared_ptr<GivenSession> mSession;
};

TEST_F(OrbIpcSessionDescriptorTest, RegistersAndIsConnected) {
  EXPECT_FALSE(mSession->isConnected());
  EXPECT_FALSE(mSession->send(3, 20, {1}));
  ASSERT_TRUE(mSession->registerReceiverHandler());
  EXPECT_TRUE(mSession->isConnected());
  EXPECT_EQ(kSession, mSession->sessionId());
  EXPECT_TRUE(isRegistered(kPeer, kSession));
  EXPECT_TRUE(mSession->send(3, 20, {1}));
  const Bytes sent = mPair.read(sizeof(ipcMsg_t) + 1);
  ASSERT_EQ(sizeof(ipcMsg_t) + 1, sent.size());
  ipcMsg_t header = {};
  memcpy(&header, sent.data(), sizeof header);
  EXPECT_EQ(1u, header.srcProcessId);
  EXPECT_EQ(kPeer, header.dstProcessId);
  EXPECT_EQ(20u, header.msgId);
  EXPECT_EQ(kSession, header.sessionId);
}

TEST_F(OrbIpcSessionDescriptorTest, ReceivesFrames) {
  std::promise<unsigned int> received;
  mSession->registerForRawMessage(
      [&](unsigned int, unsigned int msgId, Bytes) { received.set_value(msgId); });
  ASSERT_TRUE(mSession->registerReceiverHandler());
  sendFrame(21);
  EXPECT_EQ(21u, received.get_future().get());
}

TEST_F(OrbIpcSessionDescriptorTest, CleanupWaitsForItsReceiver) {
  std::promise<void> entered;
  std::promise<void> mayLeave;
  std::atomic<bool> left{false};
  mSession->registerForRawMessage([&](unsigned int, unsigned int, Bytes) {
    entered.set_value();
    mayLeave.get_future().wait();
    left = true;
  });
  ASSERT_TRUE(mSession->registerReceiverHandler());
  sendFrame(20);
  entered.get_future().wait();
  bool hadLeft = false;
  std::thread closer([&] {
    mSession->cleanup();
    hadLeft = left;
    EXPECT_TRUE(isClosed(mFd));
    EXPECT_FALSE(isRegistered(kPeer, kSession));
  });
  EXPECT_TRUE(waitLogged(kDebug, "closing socket Fd " + std::to_string(mFd)));
  mayLeave.set_value();
  closer.join();
  EXPECT_TRUE(hadLeft);
  EXPECT_FALSE(mSession->isConnected());
  EXPECT_EQ(0, mSession->losses);
}

TEST_F(OrbIpcSessionDescriptorTest, HearsOfItsLossOnce) {
  ASSERT_TRUE(mSession->registerReceiverHandler());
  mPair.closePeer();
  ASSERT_TRUE(mSession->threadSemaphore()->decreaseFor(kPatience));
  EXPECT_EQ(1, mSession->losses);
  EXPECT_FALSE(mSession->isConnected());
  EXPECT_FALSE(mSession->registerReceiverHandler());  // nothing is left to register
}

TEST_F(OrbIpcSessionDescriptorTest, HasOneReceiver) {
  ASSERT_TRUE(mSession->registerReceiverHandler());
  EXPECT_FALSE(mSession->registerReceiverHandler());
  EXPECT_TRUE(mSession->isConnected());
  EXPECT_TRUE(isRegistered(kPeer, kSession));
}

TEST_F(OrbIpcSessionDescriptorTest, RefusedRegistrationMayBeTriedAgain) {
  SocketPair other;
  RecordingHandler handler;
  ASSERT_TRUE(registerSocket(kPeer, kSession, other.ours, handler));
  EXPECT_FALSE(mSession->registerReceiverHandler());
  EXPECT_FALSE(mSession->isConnected());
  other.closePeer();
  ASSERT_TRUE(handler.waitForEnd());
  EXPECT_TRUE(mSession->registerReceiverHandler());
  EXPECT_TRUE(mSession->isConnected());
}

TEST_F(OrbIpcSessionDescriptorTest, ForgetsItsRegistrationWhenTold) {
  ASSERT_TRUE(mSession->registerReceiverHandler());
  mSession->deregisterReceiverHandler();
  EXPECT_FALSE(isRegistered(kPeer, kSession));
  EXPECT_TRUE(isOpen(mFd));
  recording::clear();
  mSession->deregisterReceiverHandler();
  EXPECT_TRUE(logged().empty());  // not twice
}

TEST_F(OrbIpcSessionDescriptorTest, ClosesWhatWasNeverRegistered) {
  mSession->cleanup();
  EXPECT_TRUE(isClosed(mFd));
  EXPECT_FALSE(mSession->registerReceiverHandler());
}

}  // namespace
}  // namespace ipctest
