// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
// A failed send: the connection counts as lost, the receiver reports it, and no signal is raised.
#include <errno.h>
#include <gtest/gtest.h>
#include <signal.h>

#include <thread>

#include "IpcTestSupport.h"
#include "Thread.h"

namespace {

using namespace ipctest;
using Bytes = std::vector<unsigned char>;
using Calls = std::vector<std::string>;

constexpr unsigned long kPeer = 1;
constexpr unsigned int kSession = 7;

class ProcessUtilsSendFailureTest : public testing::Test {
 protected:
  void SetUp() override {
    // Like an application without a handler: a signal would end the program.
    ASSERT_NE(SIG_ERR, signal(SIGPIPE, SIG_DFL));
    ASSERT_TRUE(registerSocket(kPeer, kSession, mPair.ours, mHandler));
    recording::clear();
  }
  static bool send(int flags = 0, size_t bytes = 0) {
    const Bytes payload(bytes);
    return ProcessUtilsWrapper::sendMsg(payload.data(), bytes, 5, 0, 105, kPeer, kSession, flags);
  }
  void expectOneLoss() {
    ASSERT_TRUE(mHandler.waitForEnd());
    EXPECT_EQ((Calls{"session 7", "receiver " + std::to_string(mPair.ours)}), mHandler.calls());
    EXPECT_FALSE(isRegistered(kPeer, kSession));
    EXPECT_TRUE(isClosed(mPair.ours));
    EXPECT_FALSE(send());
  }

  SocketPair mPair;
  RecordingHandler mHandler;
};

TEST_F(ProcessUtilsSendFailureTest, PeerThatReadsNoMoreIsALoss) {
  shutdown(mPair.peer, SHUT_RD);  // the other direction stays open, so the receiver notices nothing
  EXPECT_FALSE(send());
  EXPECT_TRUE(hasLogged(
      kError, "send: failure, errno: " + std::to_string(EPIPE) + "(" + strerror(EPIPE) + ")"));
  expectOneLoss();
}

TEST_F(ProcessUtilsSendFailureTest, LossIsToldOnceHoweverManySendsFail) {
  shutdown(mPair.peer, SHUT_RD);
  std::thread others[4];
  for (std::thread& other : others) {
    other = std::thread([] {
      for (int i = 0; i < 100; ++i) EXPECT_FALSE(send());
    });
  }
  for (std::thread& other : others) other.join();
  expectOneLoss();
}

TEST_F(ProcessUtilsSendFailureTest, NoRoomWithoutWaitingIsNoLoss) {
  int sent = 0;
  while (sent < 10000 && send(MSG_DONTWAIT, 16384)) ++sent;
  EXPECT_GT(10000, sent);
  EXPECT_TRUE(hasLogged(
      kError, "send: failure, errno: " + std::to_string(EAGAIN) + "(" + strerror(EAGAIN) + ")"));
  const size_t all = static_cast<size_t>(sent) * (sizeof(ipcMsg_t) + 16384);
  EXPECT_EQ(all, mPair.read(all).size());
  EXPECT_TRUE(send());
  EXPECT_EQ(sizeof(ipcMsg_t), mPair.read(sizeof(ipcMsg_t)).size());
  EXPECT_TRUE(mHandler.calls().empty());
  mPair.closePeer();
  expectOneLoss();
}

TEST_F(ProcessUtilsSendFailureTest, AttemptWithoutWaitingThatFailsOtherwiseIsALoss) {
  shutdown(mPair.peer, SHUT_RD);
  EXPECT_FALSE(send(MSG_DONTWAIT));
  expectOneLoss();
}

// Threads of the library already block the signal; there the caller's flags are used.
TEST_F(ProcessUtilsSendFailureTest, SignalIsKeptFromApplicationThreadsOnly) {
  EXPECT_EQ(MSG_NOSIGNAL, sendFlags());
  EXPECT_EQ(MSG_NOSIGNAL | MSG_DONTWAIT, sendFlags(MSG_DONTWAIT));
  int flags = -1;
  int flagsDontWait = -1;
  Thread library;
  ASSERT_TRUE(startThread(library, "orb-test", ThreadWork::Library, [&] {
    flags = sendFlags();
    flagsDontWait = sendFlags(MSG_DONTWAIT);
    shutdown(mPair.peer, SHUT_RD);
    EXPECT_FALSE(send());
  }));
  library.join();
  EXPECT_EQ(0, flags);
  EXPECT_EQ(MSG_DONTWAIT, flagsDontWait);
  expectOneLoss();
}

}  // namespace
