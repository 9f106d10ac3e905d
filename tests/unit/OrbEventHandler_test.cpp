// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "OrbEventHandler.h"

#include <string.h>

#include <thread>

#include "IThreadEventHandler.h"
#include "OrbEventHandlerFixture.h"
#include "SdkClientEvent.h"

namespace {

TEST_F(OrbEventHandlerTest, ConstructionRegistersADescriptorAndSaysSo) {
  EXPECT_TRUE(mHandler->canHandle());
  EXPECT_EQ(1, mManager->getNumRegisteredFds());
  const Entries lines = log();
  ASSERT_GE(lines.size(), 4u);
  EXPECT_EQ(lines[0], Entry(3, "OrbEventHandler ctor"));
  EXPECT_EQ(lines[1].second.find(text("addEventHandler(int %d, ", mFd)), 0u);
  EXPECT_EQ(lines[2], Entry(3, text("Added event handler %d", mFd)));
  EXPECT_EQ(lines[3], Entry(3, text("OrbEventHandler: ctor fd[%d] name[numbers] addr[%p]", mFd,
                                    static_cast<void*>(mHandler.get()))));
  EXPECT_EQ(FD_CLOEXEC, fcntl(mFd, F_GETFD));
  EXPECT_NE(0, fcntl(mFd, F_GETFL) & O_NONBLOCK);
}

TEST_F(OrbEventHandlerTest, ThreePostsAreHandledByOneWakeUpInOrder) {
  for (int number : {1, 2, 3}) post(number);
  recording::clear();
  pass();
  EXPECT_EQ(mHandler->handled, (std::vector<int>{1, 2, 3}));
  EXPECT_EQ(1u, recording::count("OrbEventHandler cb start"));
  EXPECT_EQ(1u, recording::count("OrbEventHandler cb end"));
  EXPECT_EQ(fatalLines(), Entries{});
  mHandler->handled.clear();
  pass();
  EXPECT_TRUE(mHandler->handled.empty());
}

TEST_F(OrbEventHandlerTest, PostAndHandlingLeaveTheirLines) {
  const Item item = std::make_shared<int>(7);
  void* const handler = mHandler.get();
  recording::clear();
  mHandler->postEvent(item);
  EXPECT_EQ(
      log(),
      (Entries{{3, text("OrbEventHandler postEvent start for fd[%d]", mFd)},
               {3, text("Wakelock evt start %p %p", handler, static_cast<void*>(item.get()))}}));
  pass();
  EXPECT_TRUE(logged(3, "OrbEventHandler cb start"));
  EXPECT_TRUE(logged(3, text("Wakelock evt end %p %p", handler, static_cast<void*>(item.get()))));
  EXPECT_TRUE(logged(3, "OrbEventHandler cb end"));
}

TEST_F(OrbEventHandlerTest, ItemPostedByTheHandlerIsTakenInTheSamePass) {
  mHandler->onItem = [this](int number) {
    if (number == 1) post(2);
  };
  post(1);
  pass();
  EXPECT_EQ(mHandler->handled, (std::vector<int>{1, 2}));
}

TEST_F(OrbEventHandlerTest, EmptyItemIsHandledLikeAnyOther) {
  mHandler->postEvent(nullptr);
  pass();
  EXPECT_EQ(mHandler->handled, std::vector<int>{-1});
}

TEST_F(OrbEventHandlerTest, AnyThreadMayPost) {
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t) {
    threads.emplace_back([this] {
      for (int i = 0; i < 250; ++i) post(i);
    });
  }
  while (mHandler->handled.size() < 1000) mManager->processEvents(nullptr);
  for (std::thread& thread : threads) thread.join();
  pass();
  EXPECT_EQ(1000u, mHandler->handled.size());
  EXPECT_EQ(fatalLines(), Entries{});
}

TEST_F(OrbEventHandlerTest, ItemWhoseWakeUpFailedIsHandledAtTheNext) {
  fillUp(mFd);
  recording::clear();
  post(1);
  EXPECT_TRUE(
      logged(6, text("Error in writing rv: -1, error: %s, for fd[%d]", strerror(EAGAIN), mFd)));
  EXPECT_TRUE(mHandler->handled.empty());
  pass();
  EXPECT_EQ(mHandler->handled, std::vector<int>{1});
}

TEST_F(OrbEventHandlerTest, WakeUpWithoutItemIsAnErrorLine) {
  const uint64_t one = 1;
  ASSERT_EQ(8, write(mFd, &one, sizeof one));
  recording::clear();
  pass();
  EXPECT_EQ(
      fatalLines(),
      (Entries{{6, text("More fd reads than queue events. SHOULD NEVER HAPPEN. fd=%d", mFd)}}));
  EXPECT_TRUE(logged(3, "OrbEventHandler cb end"));
}

TEST_F(OrbEventHandlerTest, FailedReadIsLoggedWithErrorAndDescriptorInTheirFixedOrder) {
  post(1);
  // The eventfd stays in the manager's set through its copy, but its number cannot be read any
  // more.
  const int copy = dup(mFd);
  const int unreadable = open("/dev/null", O_WRONLY | O_CLOEXEC);
  ASSERT_EQ(mFd, dup2(unreadable, mFd));
  recording::clear();
  pass();
  EXPECT_EQ(
      fatalLines(),
      (Entries{{6, text("CB thread woken, but fd read failed. SHOULD NEVER HAPPEN. fd=%d err=%d",
                        EBADF, mFd)}}));
  EXPECT_TRUE(mHandler->handled.empty());
  ASSERT_EQ(mFd, dup2(copy, mFd));
  close(copy);
  close(unreadable);
  pass();
  EXPECT_EQ(mHandler->handled, std::vector<int>{1}) << "the item was kept";
}

TEST_F(OrbEventHandlerTest, DestructionDropsWhatIsQueuedAndClosesTheDescriptor) {
  const Item item = std::make_shared<int>(1);
  int handled = 0;
  mHandler->onItem = [&](int) { ++handled; };
  mHandler->postEvent(item);
  recording::clear();
  mHandler.reset();
  EXPECT_EQ(log()[0], Entry(3, "dtor"));
  EXPECT_EQ(log()[1], Entry(3, text("removeEventHandler(int fd: %d) EX", mFd)));
  EXPECT_EQ(1, item.use_count());
  EXPECT_EQ(0, mManager->getNumRegisteredFds());
  pass();
  EXPECT_EQ(0, handled);
  EXPECT_TRUE(isClosed(mFd));
}

TEST(SdkClientEvent, CarriesWhatItWasMadeWith) {
  SdkClientEvent request(OrbSdkClientType::LCE, {1, 2});
  EXPECT_FALSE(request.cleanup);
  EXPECT_FALSE(request.inbound);
  EXPECT_EQ(OrbSdkClientType::LCE, request.type);
  EXPECT_EQ((std::vector<uint8_t>{1, 2}), request.blob);
  EXPECT_TRUE(request.isMultiThreadEvent());
  EXPECT_TRUE(SdkClientEvent(OrbSdkClientType::LLI, {}, true).cleanup);
}

TEST(IThreadEventHandler, RegistryIsThereAndEmpty) {
  const std::lock_guard<std::mutex> lock(IThreadEventHandler::sOrbEHMutex);
  EXPECT_TRUE(IThreadEventHandler::mOrbServices.empty());
}

}  // namespace
