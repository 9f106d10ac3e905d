// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
// Posting when the counter cannot be written: no item is lost or out of order, and no item waits
// for a later post.
#include <errno.h>
#include <string.h>

#include "FailingWrites.h"
#include "OrbEventHandlerFixture.h"

namespace {

using Numbers = std::vector<int>;

class OrbEventHandlerFaults : public OrbEventHandlerTest {
 protected:
  void TearDown() override {
    writes::forget();
    OrbEventHandlerTest::TearDown();
  }
  void failWrites(size_t times, int error) {
    writes::forget();
    writes::fd = mFd;
    writes::outcomes.assign(times, {error, 0});
  }
  void postUncounted(int number) {
    failWrites(1, EBADF);
    recording::clear();
    post(number);
    EXPECT_EQ(1u, writes::calls);
    EXPECT_EQ(fatalLines(), (Entries{{6, text("Error in writing rv: -1, error: %s, for fd[%d]",
                                              strerror(EBADF), mFd)}}));
    recording::clear();
  }
  // One pass: the items that it passes on, without a line about an impossible state.
  Numbers handledByOnePass() {
    recording::clear();
    mHandler->handled.clear();
    pass();
    EXPECT_EQ(fatalLines(), Entries{});
    return mHandler->handled;
  }
};

TEST_F(OrbEventHandlerFaults, InterruptedWriteOfAPostIsRepeated) {
  failWrites(3, EINTR);
  recording::clear();
  post(1);
  EXPECT_EQ(4u, writes::calls);
  EXPECT_EQ(fatalLines(), Entries{});
  EXPECT_EQ(handledByOnePass(), Numbers{1});
}

TEST_F(OrbEventHandlerFaults, UncountedItemIsHandledWithTheNextCountedOne) {
  postUncounted(1);
  EXPECT_EQ(handledByOnePass(), Numbers{}) << "nothing has woken the loop";
  post(2);
  EXPECT_EQ(handledByOnePass(), (Numbers{1, 2}));
}

TEST_F(OrbEventHandlerFaults, UncountedItemIsNeverHandledIfNoWakeUpComes) {
  const auto item = std::make_shared<int>(1);
  failWrites(1, EBADF);
  mHandler->postEvent(item);
  EXPECT_EQ(2, item.use_count()) << "it is queued";
  Calls others;
  const int other = readyFd();
  mManager->addEventHandler(other, Calls::onEvent, &others, nullptr, EPOLLIN);
  for (int passes = 0; passes < 10; ++passes) {
    mManager->wake();  // none of these is for the handler
    EXPECT_EQ(handledByOnePass(), Numbers{});
  }
  EXPECT_EQ(10u, others.events.size());
  EXPECT_EQ(2, item.use_count()) << "it still is";
  mManager->removeEventHandler(other, true, nullptr, nullptr);
  destroyHandler();
  EXPECT_EQ(1, item.use_count()) << "dropped without being handled";
}

TEST_F(OrbEventHandlerFaults, ManyUncountedItemsKeepTheirOrder) {
  for (int number = 1; number <= 5; ++number) postUncounted(number);
  post(6);
  EXPECT_EQ(handledByOnePass(), (Numbers{1, 2, 3, 4, 5, 6}));
}

TEST_F(OrbEventHandlerFaults, NothingLagsOnceItemsHaveBeenCaughtUpWith) {
  for (int round = 0; round < 3; ++round) {
    postUncounted(1);
    post(2);
    EXPECT_EQ(handledByOnePass(), (Numbers{1, 2}));
    post(3);
    EXPECT_EQ(handledByOnePass(), Numbers{3});
    EXPECT_EQ(handledByOnePass(), Numbers{});
  }
}

TEST_F(OrbEventHandlerFaults, UncountedItemBehindACountedOneIsHandledInTheSamePass) {
  post(1);
  postUncounted(2);
  EXPECT_EQ(handledByOnePass(), (Numbers{1, 2}));
  post(3);
  EXPECT_EQ(handledByOnePass(), Numbers{3}) << "it is not counted as well";
  EXPECT_EQ(handledByOnePass(), Numbers{});
}

TEST_F(OrbEventHandlerFaults, ItemThatTheHandlerPostsUncountedIsHandledInTheSamePass) {
  mHandler->onItem = [this](int number) {
    if (number < 4) {
      failWrites(1, EBADF);
      post(number + 1);
    }
  };
  post(1);
  pass();
  EXPECT_EQ(mHandler->handled, (Numbers{1, 2, 3, 4}));
  EXPECT_EQ(handledByOnePass(), Numbers{});
}

TEST_F(OrbEventHandlerFaults, LoopCanBeWokenForUncountedItems) {
  postUncounted(1);
  postUncounted(2);
  mHandler->wakeForUncounted();
  EXPECT_EQ(handledByOnePass(), (Numbers{1, 2}));
  post(3);
  EXPECT_EQ(handledByOnePass(), Numbers{3});
}

TEST_F(OrbEventHandlerFaults, InterruptedWakeUpForUncountedItemsIsRepeated) {
  postUncounted(1);
  failWrites(2, EINTR);
  mHandler->wakeForUncounted();
  EXPECT_EQ(3u, writes::calls);
  EXPECT_EQ(handledByOnePass(), Numbers{1});
}

TEST_F(OrbEventHandlerFaults, UncountedItemsStayUncountedWhenTheirWakeUpFails) {
  postUncounted(1);
  failWrites(1, EBADF);
  mHandler->wakeForUncounted();
  EXPECT_EQ(handledByOnePass(), Numbers{});
  mHandler->wakeForUncounted();
  EXPECT_EQ(handledByOnePass(), Numbers{1});
}

TEST_F(OrbEventHandlerFaults, LoopIsNotWokenWithoutUncountedItems) {
  post(1);
  failWrites(0, 0);
  mHandler->wakeForUncounted();
  EXPECT_EQ(0u, writes::calls);
  EXPECT_EQ(handledByOnePass(), Numbers{1});
  mHandler->wakeForUncounted();
  EXPECT_EQ(0u, writes::calls);
}

TEST_F(OrbEventHandlerFaults, PreparedItemIsPostedLikeAnyOther) {
  Handler::Posting first = Handler::prepare(std::make_shared<int>(1));
  Handler::Posting second = Handler::prepare(std::make_shared<int>(2));
  EXPECT_EQ(handledByOnePass(), Numbers{}) << "nothing is posted yet";
  mHandler->post(std::move(second));
  mHandler->post(std::move(first));
  EXPECT_EQ(handledByOnePass(), (Numbers{2, 1}));
}

}  // namespace
