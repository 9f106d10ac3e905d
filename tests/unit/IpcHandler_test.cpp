// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "IpcHandler.h"

#include <gtest/gtest.h>

#include <thread>
#include <vector>

#include "IpcTestSupport.h"

namespace {

using namespace ipctest;

class IntHandler : public IpcHandler<int> {
 public:
  void handleEvent(int msg) override {
    handled.push_back(msg);
    threads.push_back(std::this_thread::get_id());
    if (onEvent) onEvent(msg);
  }
  using IpcHandler<int>::setRunning;

  std::vector<int> handled;
  std::vector<std::thread::id> threads;
  std::function<void(int)> onEvent;
};

class IpcHandlerTest : public ::testing::Test {
 protected:
  void SetUp() override { recording::clear(); }
};

TEST_F(IpcHandlerTest, NotRunningHandlesBeforePostReturns) {
  IntHandler handler;
  handler.postToSelf(4);
  EXPECT_EQ((std::vector<int>{4}), handler.handled);
  EXPECT_EQ(std::this_thread::get_id(), handler.threads.at(0));
}

TEST_F(IpcHandlerTest, RunningQueuesUntilTheLoopComes) {
  IntHandler handler;
  handler.setRunning();
  for (int i = 0; i < 5; ++i) handler.postToSelf(i);
  EXPECT_TRUE(handler.handled.empty());
  handler.onEvent = [&](int msg) {
    if (msg == 4) handler.stop();
  };
  // One count of the semaphore is used for five messages.
  handler.start();
  EXPECT_EQ((std::vector<int>{0, 1, 2, 3, 4}), handler.handled);
  EXPECT_EQ(Entry(kDebug, "running infinite loop"), logged().at(0));
}

TEST_F(IpcHandlerTest, LoopHandlesOnItsOwnThread) {
  IntHandler handler;
  handler.setRunning();
  Semaphore done;
  handler.onEvent = [&](int msg) {
    if (msg == 99) done.increase();
  };
  std::thread loop([&] { handler.start(); });
  const auto loopId = loop.get_id();
  for (int i = 0; i < 100; ++i) handler.postToSelf(i);
  done.decrease();
  handler.stop();
  loop.join();
  ASSERT_EQ(100u, handler.handled.size());
  for (int i = 0; i < 100; ++i) EXPECT_EQ(i, handler.handled[static_cast<size_t>(i)]);
  for (const auto& id : handler.threads) EXPECT_EQ(loopId, id);
}

TEST_F(IpcHandlerTest, HandlerMayPostToItself) {
  IntHandler handler;
  handler.setRunning();
  handler.onEvent = [&](int msg) {
    if (msg < 3) handler.postToSelf(msg + 1);
    if (msg == 3) handler.stop();
  };
  handler.postToSelf(0);
  handler.start();
  EXPECT_EQ((std::vector<int>{0, 1, 2, 3}), handler.handled);
}

TEST_F(IpcHandlerTest, MessagesQueuedAtStopAreNotHandled) {
  {
    IntHandler handler;
    handler.setRunning();
    handler.postToSelf(1);
    handler.postToSelf(2);
    handler.onEvent = [&](int) { handler.stop(); };
    handler.start();
    EXPECT_EQ((std::vector<int>{1}), handler.handled);
  }
  EXPECT_TRUE(hasLogged(kDebug, "IpcHandler stop called"));
  EXPECT_TRUE(hasLogged(kDebug, "discarding queued messages"));
  bool fromDestructor = false;
  for (const auto& text : recording::texts()) {
    fromDestructor |= text.rfind("|ORB|IpcHandler::~IpcHandler:", 0) == 0;
  }
  EXPECT_TRUE(fromDestructor);
}

TEST_F(IpcHandlerTest, QueuedMessagesAreReleasedWithTheHandler) {
  struct Shared : IpcHandler<std::shared_ptr<int>> {
    void handleEvent(std::shared_ptr<int>) override { ++handled; }
    using IpcHandler<std::shared_ptr<int>>::setRunning;
    int handled = 0;
  };
  const auto message = std::make_shared<int>(1);
  {
    Shared handler;
    handler.setRunning();
    handler.postToSelf(message);
    handler.stop();
    EXPECT_EQ(2, message.use_count());
    EXPECT_EQ(0, handler.handled);
  }
  EXPECT_EQ(1, message.use_count());
}

TEST_F(IpcHandlerTest, PostAfterStopIsHandledAtOnce) {
  IntHandler handler;
  handler.setRunning();
  handler.postToSelf(1);
  handler.stop();
  handler.postToSelf(2);
  EXPECT_EQ((std::vector<int>{2}), handler.handled);
  handler.start();  // stopped: returns without handling queued messages
  EXPECT_EQ((std::vector<int>{2}), handler.handled);
}

TEST_F(IpcHandlerTest, StopWhenNotRunningOnlyLogs) {
  IntHandler handler;
  handler.stop();
  EXPECT_EQ((Entries{{kDebug, "IpcHandler stop called"}}), logged());
}

TEST_F(IpcHandlerTest, StopWakesAWaitingLoop) {
  IntHandler handler;
  handler.setRunning();
  std::thread loop([&] { handler.start(); });
  ASSERT_TRUE(waitLogged(kDebug, "running infinite loop"));
  handler.stop();
  loop.join();
  EXPECT_TRUE(handler.handled.empty());
}

}  // namespace
