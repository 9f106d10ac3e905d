// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
// The process-wide socket tables when the system has no thread to give. Tests run in the order of
// this file: registering the process works once.
#include <dlfcn.h>
#include <errno.h>
#include <gtest/gtest.h>
#include <pthread.h>

#include <atomic>
#include <future>

#include "IpcTestSupport.h"
#include "Thread.h"

namespace {

std::atomic<bool> threadsFail{false};

}  // namespace

// Comes before the C library's own.
extern "C" int pthread_create(pthread_t* thread, const pthread_attr_t* attributes,
                              void* (*body)(void*), void* data) {
  if (threadsFail) return EAGAIN;
  static const auto real =
      reinterpret_cast<decltype(&pthread_create)>(dlsym(RTLD_NEXT, "pthread_create"));
  return real(thread, attributes, body, data);
}

namespace {

using namespace ipctest;

constexpr unsigned long kPeer = 1;

class ProcessUtilsNoThreadTest : public testing::Test {
 protected:
  ProcessUtilsNoThreadTest() {
    recording::clear();
    threadsFail = true;
  }
  ~ProcessUtilsNoThreadTest() override { threadsFail = false; }

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
  threadsFail = false;
  EXPECT_TRUE(registerSocket(kPeer, 7, mPair.ours, mHandler));
  mPair.closePeer();
  EXPECT_TRUE(mHandler.waitForEnd());
}

// The one that has the pair is on its way out, but nobody takes its place.
TEST_F(ProcessUtilsNoThreadTest, PairIsNotTakenOverWithoutAThread) {
  SocketPair next;
  RecordingHandler nextHandler;
  threadsFail = false;
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
  threadsFail = true;
  EXPECT_FALSE(registerSocket(kPeer, 7, next.ours, nextHandler));
  EXPECT_TRUE(hasLogged(kError, "id: 0x1, sessionId: 7: no thread to receive on"));
  EXPECT_TRUE(isRegistered(kPeer, 7));
  EXPECT_TRUE(isOpen(next.ours));
  threadsFail = false;
  mayEnd.set_value();
  ASSERT_TRUE(busy.waitForEnd());
  EXPECT_EQ("session 7", busy.calls().front());
  EXPECT_FALSE(isRegistered(kPeer, 7));
  close(next.ours);
}

}  // namespace
