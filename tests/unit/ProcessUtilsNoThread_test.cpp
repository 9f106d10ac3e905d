// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
// The process-wide socket tables when no thread can be created. Tests run in the order of this
// file, because the process can be registered only once.
#include <gtest/gtest.h>

#include <future>

#include "FailingThreads.h"
#include "IpcTestSupport.h"
#include "Thread.h"

namespace {

using namespace ipctest;

constexpr unsigned long kPeer = 1;

class ProcessUtilsNoThreadTest : public testing::Test {
 protected:
  ProcessUtilsNoThreadTest() {
    recording::clear();
    threads::fail = true;
  }
  ~ProcessUtilsNoThreadTest() override { threads::forget(); }

  SocketPair mPair;
  RecordingHandler mHandler;
};

TEST_F(ProcessUtilsNoThreadTest, StartThreadSaysSoAndLeavesItsResultAlone) {
  Thread thread;
  EXPECT_FALSE(startThread(thread, "orb-test", ThreadWork::Library, [] {}));
  EXPECT_FALSE(thread.joinable());
  EXPECT_TRUE(recording::lines().empty());
  close(mPair.ours);
}

TEST_F(ProcessUtilsNoThreadTest, ProcessIsRegisteredWithoutItsSocket) {
  regProcess(42, "first", 3, "", mPair.ours, mHandler);
  EXPECT_EQ("first", getAssignedProcessName());
  EXPECT_EQ(42u, getAssignedProcessId());
  EXPECT_FALSE(isRegistered(42, 3));
  EXPECT_TRUE(isOpen(mPair.ours));
  EXPECT_EQ((Entries{{kError, "id: 0x2a, sessionId: 3: no thread to receive on"},
                     {kDebug, "registered: first"}}),
            logged());
  close(mPair.ours);
}

TEST_F(ProcessUtilsNoThreadTest, SocketIsLeftToItsOwnerWhoMayTryAgain) {
  EXPECT_FALSE(registerSocket(kPeer, 7, mPair.ours, mHandler));
  EXPECT_FALSE(isRegistered(kPeer, 7));
  EXPECT_TRUE(isOpen(mPair.ours));
  EXPECT_TRUE(hasLogged(kError, "id: 0x1, sessionId: 7: no thread to receive on"));
  threads::fail = false;
  EXPECT_TRUE(registerSocket(kPeer, 7, mPair.ours, mHandler));
  mPair.closePeer();
  EXPECT_TRUE(mHandler.waitForEnd());
}

// The socket with the pair is being removed, but no other socket replaces it.
TEST_F(ProcessUtilsNoThreadTest, PairIsNotTakenOverWithoutAThread) {
  SocketPair next;
  RecordingHandler nextHandler;
  threads::fail = false;
  std::promise<void> mayEnd;
  struct : RecordingHandler {
    void handleMsg(ipcMsg_t*) override { mayEnd->get_future().wait(); }
    std::promise<void>* mayEnd = nullptr;
  } busy;
  busy.mayEnd = &mayEnd;
  ASSERT_TRUE(registerSocket(kPeer, 7, mPair.ours, busy));
  const ipcMsg_t frame = {kPeer, 105, 5, 0, 7, 0};
  mPair.write(&frame, sizeof frame);
  mPair.closePeer();
  threads::fail = true;
  EXPECT_FALSE(registerSocket(kPeer, 7, next.ours, nextHandler));
  EXPECT_TRUE(hasLogged(kError, "id: 0x1, sessionId: 7: no thread to receive on"));
  EXPECT_TRUE(isRegistered(kPeer, 7));
  EXPECT_TRUE(isOpen(next.ours));
  threads::fail = false;
  mayEnd.set_value();
  ASSERT_TRUE(busy.waitForEnd());
  EXPECT_EQ("session 7", busy.calls().front());
  EXPECT_FALSE(isRegistered(kPeer, 7));
  close(next.ours);
}

}  // namespace
