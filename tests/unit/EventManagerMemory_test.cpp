// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
// Event manager and event handler without memory: failed operations leave nothing behind, and
// existing handlers can be removed without memory.
#include <errno.h>
#include <sys/epoll.h>

#include <cstdio>
#include <new>

#include "FailingNew.h"
#include "OrbEventHandlerFixture.h"

namespace {

using memory::Caller;

// Calls @p make with each of its allocations failing: each time it throws, and @p check runs.
template <class Make, class Check>
void throwForEach(const char* what, const Make& make, const Check& check) {
  bool thrown = false;
  const size_t failed = memory::failEach(
      Caller::Anybody,
      [&] {
        try {
          make();
        } catch (const std::bad_alloc&) {
          thrown = true;
        }
      },
      [&](size_t nth) {
        EXPECT_TRUE(thrown) << what << " " << nth;
        thrown = false;
        check(nth);
      });
  std::printf("%s: %zu allocations failed\n", what, failed);
  EXPECT_GT(failed, 0u);
}

class EventManagerMemory : public EventManagerTest {
 protected:
  bool inEpoll(int fd) const {
    epoll_event event{};
    return epoll_ctl(mEpollFd, EPOLL_CTL_MOD, fd, &event) == 0 || errno != ENOENT;
  }
  bool approved(int fd) {
    mManager->lockRecursiveMutex();
    const bool result = mManager->isApprovedFd(fd);
    mManager->unlockRecursiveMutex();
    return result;
  }
};

TEST_F(EventManagerMemory, ManagerThatCannotBeMadeGivesItsDescriptorsBack) {
  destroyManager();
  const size_t open = openDescriptors();
  throwForEach(
      "manager", [this] { mManager = std::make_unique<EventManager>(); },
      [&](size_t nth) { EXPECT_EQ(open, openDescriptors()) << nth; });
  ASSERT_NE(nullptr, mManager);
  EXPECT_EQ(open + 3, openDescriptors());
}

TEST_F(EventManagerMemory, DescriptorThatCannotBeAddedIsNowhere) {
  const int fd = readyFd();
  Calls calls;
  const auto add = [&] {
    EXPECT_TRUE(mManager->addEventHandler(fd, Calls::onEvent, &calls, Calls::onClose, EPOLLIN));
  };
  throwForEach("registration", add, [&](size_t nth) {
    EXPECT_EQ(0, mManager->getNumRegisteredFds()) << nth;
    EXPECT_FALSE(approved(fd)) << nth;
    EXPECT_FALSE(mManager->isWatched(fd)) << nth;
    EXPECT_FALSE(inEpoll(fd)) << nth;
    pass();
    EXPECT_TRUE(calls.events.empty()) << nth;
  });
  EXPECT_TRUE(mManager->isWatched(fd)) << "the last attempt had all it needed";
  EXPECT_TRUE(approved(fd));
  pass();
  EXPECT_EQ(std::vector<int>{fd}, calls.events);
  mManager->removeEventHandler(fd, true, nullptr, nullptr);
  pass();
  EXPECT_EQ(std::vector<int>{fd}, calls.closes);
  EXPECT_TRUE(isClosed(fd));
}

TEST_F(EventManagerMemory, RemovalNeedsNoMemory) {
  Calls calls;
  const int fd = readyFd();
  ASSERT_TRUE(mManager->addEventHandler(fd, Calls::onEvent, &calls, nullptr, EPOLLIN));
  {
    const memory::NoMemory none;
    mManager->removeEventHandler(fd, true, nullptr, nullptr);
    runRemovals();
  }
  EXPECT_EQ(0, mManager->getNumRegisteredFds());
  EXPECT_TRUE(isClosed(fd));
  EXPECT_TRUE(logged(3, text("Closed %d", fd)));
}

TEST_F(EventManagerMemory, ImmediateRemovalOfAKnownDescriptorNeedsNoMemory) {
  const int fd = idleFd();
  ASSERT_TRUE(mManager->addEventHandler(fd, nullptr, nullptr, nullptr, EPOLLIN));
  {
    const memory::NoMemory none;
    mManager->immediatelyRemoveEventHandler(fd);
    runRemovals();
  }
  EXPECT_TRUE(isClosed(fd));
}

TEST_F(EventManagerMemory, PassNeedsNoMemoryToCallAHandlerThatRemovesItself) {
  struct Self {
    EventManager* manager;
    int calls;
  } self{mManager.get(), 0};
  const int fd = readyFd();
  const auto onEvent = [](int readable, void* data) {
    auto* const me = static_cast<Self*>(data);
    ++me->calls;
    me->manager->removeEventHandler(readable, true, nullptr, nullptr);
  };
  ASSERT_TRUE(mManager->addEventHandler(fd, onEvent, &self, nullptr, EPOLLIN));
  {
    const memory::NoMemory none;
    mManager->processEvents(nullptr);
    mManager->processEvents(nullptr);
  }
  EXPECT_EQ(1, self.calls);
  EXPECT_TRUE(isClosed(fd));
}

TEST_F(EventManagerMemory, DestructionNeedsNoMemory) {
  const int fd = idleFd();
  ASSERT_TRUE(mManager->addEventHandler(fd, nullptr, nullptr, nullptr, EPOLLIN));
  {
    const memory::NoMemory none;
    mManager->removeEventHandler(fd, true, nullptr, nullptr);
    runRemovals();
    destroyManager();
  }
  EXPECT_TRUE(isClosed(fd));
}

TEST_F(EventManagerMemory, EventHandlerThatCannotBeMadeGivesItsDescriptorBack) {
  const size_t open = openDescriptors();
  std::unique_ptr<Handler> handler;
  throwForEach(
      "event handler", [&] { handler = std::make_unique<Handler>(mManager.get()); },
      [&](size_t nth) {
        EXPECT_EQ(open, openDescriptors()) << nth;
        EXPECT_EQ(0, mManager->getNumRegisteredFds()) << nth;
      });
  ASSERT_NE(nullptr, handler);
  EXPECT_TRUE(handler->canHandle());
  handler.reset();
  pass();
  EXPECT_EQ(open, openDescriptors());
}

class EventHandlerMemory : public OrbEventHandlerTest {};

TEST_F(EventHandlerMemory, ItemThatCannotBePostedIsNotCounted) {
  const Item item = std::make_shared<int>(1);
  throwForEach(
      "post", [&] { mHandler->postEvent(item); },
      [&](size_t nth) {
        EXPECT_EQ(1, item.use_count()) << nth;
        recording::clear();
        pass();
        EXPECT_EQ(0u, recording::count("OrbEventHandler cb start")) << nth;
      });
  pass();
  EXPECT_EQ(std::vector<int>{1}, mHandler->handled);
}

TEST_F(EventHandlerMemory, PreparedItemIsPostedAndHandledWithoutMemory) {
  Handler::Posting posting = Handler::prepare(std::make_shared<int>(7));
  mHandler->handled.reserve(1);
  {
    const memory::NoMemory none;
    mHandler->post(std::move(posting));
    mManager->processEvents(nullptr);
  }
  EXPECT_EQ(std::vector<int>{7}, mHandler->handled);
}

TEST_F(EventHandlerMemory, DestructionNeedsNoMemory) {
  post(1);
  {
    const memory::NoMemory none;
    mHandler.reset();
    runRemovals();
  }
  EXPECT_EQ(0, mManager->getNumRegisteredFds());
  EXPECT_TRUE(isClosed(mFd));
}

}  // namespace
