// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstring>
#include <thread>

#include "EventManagerFixture.h"

namespace {

class EventManagerRemovalTest : public EventManagerTest {
 protected:
  // Registers a descriptor that is readable from the start.
  int addReady(Calls& calls) {
    const int fd = readyFd();
    EXPECT_TRUE(mManager->addEventHandler(fd, Calls::onEvent, &calls, Calls::onClose, EPOLLIN));
    return fd;
  }

  static Entry removing(int fd) { return {3, text("removing %d from epollFd", fd)}; }
  static Entry clearing(int fd) { return {3, text("Clearing local update FD:%d", fd)}; }
};

TEST_F(EventManagerRemovalTest, RemovingAnUnknownDescriptorDoesNothing) {
  const int fd = idleFd();
  recording::clear();
  mManager->removeEventHandler(fd, true, nullptr, nullptr);
  pass();
  EXPECT_EQ((Entries{{3, text("removeEventHandler(int fd: %d) EX", fd)}}), log());
  EXPECT_TRUE(isOpen(fd));
  close(fd);
}

TEST_F(EventManagerRemovalTest, ImmediateRemovalOfAnUnknownDescriptorClosesItInThePass) {
  const int fd = idleFd();
  recording::clear();
  mManager->immediatelyRemoveEventHandler(fd);
  EXPECT_TRUE(isOpen(fd));
  mManager->processEvents(nullptr);
  EXPECT_EQ((Entries{{3, text("immediatelyRemoveEventHandler(int fd: %d) EX", fd)},
                     {3, "there are 1 file descriptor(s) with events pending"},
                     {3, "processRemove enter"},
                     removing(fd),
                     {6, text("Cannot remove event handler errno %d", ENOENT)},
                     {3, text("Closed %d", fd)},
                     clearing(fd),
                     {3, "processRemove exit"}}),
            log());
  EXPECT_TRUE(isClosed(fd));
}

TEST_F(EventManagerRemovalTest, RemovalIsFinishedByTheNextPass) {
  const int fd = idleFd();
  Calls calls;
  mManager->addEventHandler(fd, Calls::onEvent, &calls, Calls::onClose, EPOLLIN);
  recording::clear();
  mManager->removeEventHandler(fd, true, nullptr, nullptr);
  EXPECT_EQ(std::vector<int>{fd}, calls.closes);
  EXPECT_TRUE(isOpen(fd));
  EXPECT_EQ((Entries{{3, text("removeEventHandler(int fd: %d) EX", fd)}}), log());
  recording::clear();
  mManager->processEvents(nullptr);
  EXPECT_EQ((Entries{{3, "there are 1 file descriptor(s) with events pending"},
                     {3, "processRemove enter"},
                     removing(fd),
                     {3, text("Closed %d", fd)},
                     clearing(fd),
                     {3, "processRemove exit"}}),
            log());
  EXPECT_TRUE(isClosed(fd));
  recording::clear();
  pass();  // the removal descriptor has been drained
  EXPECT_TRUE(log().empty());
}

TEST_F(EventManagerRemovalTest, RemovalWithoutCloseLeavesTheDescriptorOpen) {
  Calls calls;
  const int fd = addReady(calls);
  mManager->removeEventHandler(fd, false, nullptr, nullptr);
  while (recording::count("processRemove exit") == 0) pass();
  EXPECT_FALSE(recording::has(text("Closed %d", fd)));
  EXPECT_TRUE(isOpen(fd));
  recording::clear();
  pass();  // no longer in epoll
  EXPECT_TRUE(log().empty());
  close(fd);
}

TEST_F(EventManagerRemovalTest, PassWorksInAscendingOrder) {
  const int low = idleFd();
  const int high = idleFd();
  ASSERT_LT(low, high);
  for (const int fd : {high, low}) {
    mManager->addEventHandler(fd, Calls::onEvent, nullptr, nullptr, EPOLLIN);
  }
  for (const int fd : {high, low}) mManager->removeEventHandler(fd, true, nullptr, nullptr);
  recording::clear();
  mManager->processEvents(nullptr);
  EXPECT_EQ((Entries{{3, "there are 1 file descriptor(s) with events pending"},
                     {3, "processRemove enter"},
                     removing(low),
                     {3, text("Closed %d", low)},
                     removing(high),
                     {3, text("Closed %d", high)},
                     clearing(low),
                     clearing(high),
                     {3, "processRemove exit"}}),
            log());
}

TEST_F(EventManagerRemovalTest, CloseFunctionIsCalledInsteadOfClose) {
  const int fd = idleFd();
  mManager->addEventHandler(fd, Calls::onEvent, nullptr, nullptr, EPOLLIN);
  std::thread::id closer;
  mManager->removeEventHandler(
      fd, true,
      [](void* data) { *static_cast<std::thread::id*>(data) = std::this_thread::get_id(); },
      &closer);
  EXPECT_EQ(std::thread::id(), closer);
  std::thread loop([this] { mManager->processEvents(nullptr); });
  const std::thread::id loopId = loop.get_id();
  loop.join();
  EXPECT_EQ(loopId, closer);
  EXPECT_TRUE(logged(3, text("Closed %d", fd)));
  EXPECT_TRUE(isOpen(fd));
  close(fd);
}

TEST_F(EventManagerRemovalTest, CloseFunctionIsNotCalledWithoutClose) {
  const int fd = idleFd();
  mManager->addEventHandler(fd, Calls::onEvent, nullptr, nullptr, EPOLLIN);
  mManager->removeEventHandler(
      fd, false, [](void*) { FAIL(); }, nullptr);
  pass();
  EXPECT_TRUE(isOpen(fd));
  close(fd);
}

// In a close callback another thread can use the manager, so the mutex is not locked.
void useManagerFromOtherThread(int, void* data) {
  std::thread other([data] {
    auto* const manager = static_cast<orb::utils::EventManager*>(data);
    manager->lockRecursiveMutex();
    manager->unlockRecursiveMutex();
  });
  other.join();
}

TEST_F(EventManagerRemovalTest, CallbacksRunOutsideTheMutex) {
  const int first = readyFd();
  const int second = idleFd();
  mManager->addEventHandler(first, useManagerFromOtherThread, mManager.get(),
                            useManagerFromOtherThread, EPOLLIN);
  mManager->addEventHandler(second, Calls::onEvent, mManager.get(), useManagerFromOtherThread,
                            EPOLLIN);
  pass();
  mManager->removeEventHandler(first, true, nullptr, nullptr);
  mManager->immediatelyRemoveEventHandler(second);
  while (recording::count("processRemove exit") == 0) pass();
}

TEST_F(EventManagerRemovalTest, LaterRemovalReplacesAPendingOne) {
  const int fd = idleFd();
  mManager->addEventHandler(fd, Calls::onEvent, nullptr, nullptr, EPOLLIN);
  mManager->removeEventHandler(fd, false, nullptr, nullptr);
  mManager->immediatelyRemoveEventHandler(fd);
  pass();
  EXPECT_EQ(1u, recording::count(removing(fd).second));
  EXPECT_EQ(1u, recording::count(clearing(fd).second));
  EXPECT_TRUE(isClosed(fd));
}

TEST_F(EventManagerRemovalTest, EventOfADescriptorBeingRemovedIsRefused) {
  Calls calls;
  const int fd = addReady(calls);
  mManager->removeEventHandler(fd, true, nullptr, nullptr);
  recording::clear();
  pass();
  EXPECT_TRUE(
      logged(6, text("file descriptor %d is not on the approved list, cannot process event", fd)));
  EXPECT_TRUE(calls.events.empty());
  EXPECT_TRUE(isClosed(fd));
}

// Two ready descriptors; the callback of each removes the other.
struct Rivals {
  orb::utils::EventManager& manager;
  int fds[2];
  int calls;
};

TEST_F(EventManagerRemovalTest, HandlerRemovedByAnotherOfTheSamePassDoesNotRun) {
  Rivals rivals{*mManager, {readyFd(), readyFd()}, 0};
  const auto removeOther = [](int fd, void* data) {
    Rivals& self = *static_cast<Rivals*>(data);
    ++self.calls;
    self.manager.removeEventHandler(self.fds[fd == self.fds[0] ? 1 : 0], true, nullptr, nullptr);
  };
  for (const int fd : rivals.fds) {
    mManager->addEventHandler(fd, removeOther, &rivals, nullptr, EPOLLIN);
  }
  pass();
  EXPECT_EQ(1, rivals.calls);
  EXPECT_EQ(1, mManager->getNumRegisteredFds());
  for (const int fd : rivals.fds) mManager->removeEventHandler(fd, true, nullptr, nullptr);
  while (mManager->getNumRegisteredFds() != 0 || isOpen(rivals.fds[0]) || isOpen(rivals.fds[1])) {
    pass();
  }
}

TEST_F(EventManagerRemovalTest, RegistrationBeforeThePassIsTakenDownWithTheOldOne) {
  Calls first;
  Calls second;
  const int fd = addReady(first);
  mManager->removeEventHandler(fd, true, nullptr, nullptr);
  recording::clear();
  EXPECT_TRUE(mManager->addEventHandler(fd, Calls::onEvent, &second, Calls::onClose, EPOLLIN));
  EXPECT_TRUE(logged(6, text("Cannot add event handler. err:%d", EEXIST)));
  pass();  // the number is removed from epoll and closed, but the new handler stays recorded
  EXPECT_TRUE(isClosed(fd));
  EXPECT_TRUE(first.events.empty());
  EXPECT_TRUE(second.closes.empty());
  EXPECT_EQ(1, mManager->getNumRegisteredFds());
}

TEST_F(EventManagerRemovalTest, TimersRunBeforeTheRemovalPass) {
  Calls calls;
  const int fd = addReady(calls);
  mManager->removeEventHandler(fd, true, nullptr, nullptr);
  OrbTimer timer(nullptr);
  size_t linesBeforeTimer = 1;
  timer.addTimedCallback(
      0,
      [](void* data) {
        *static_cast<size_t*>(data) = recording::lines().size();
        return -1;
      },
      &linesBeforeTimer);
  recording::clear();
  mManager->processEvents(&timer);
  EXPECT_EQ(0u, linesBeforeTimer);
  EXPECT_TRUE(recording::has("processRemove exit"));
}

TEST_F(EventManagerRemovalTest, RemovalPassComesAfterAllDispatching) {
  const int removed = idleFd();
  mManager->addEventHandler(removed, Calls::onEvent, nullptr, nullptr, EPOLLIN);
  mManager->removeEventHandler(removed, true, nullptr, nullptr);  // ready before the next one
  Calls calls;
  const int fd = addReady(calls);
  recording::clear();
  mManager->processEvents(nullptr);
  const std::vector<std::string> lines = recording::texts();
  ASSERT_EQ(std::vector<int>{fd}, calls.events);
  const auto at = [&lines](const std::string& line) {
    return std::distance(lines.begin(), std::find(lines.begin(), lines.end(), line));
  };
  EXPECT_LT(at(text("processing event number: 1, handling 1 for %d", fd)),
            at("processRemove enter"));
  mManager->removeEventHandler(fd, true, nullptr, nullptr);
  pass();
}

TEST_F(EventManagerRemovalTest, FailedNotificationIsLoggedAndTheRemovalStillHandled) {
  const int fd = idleFd();
  mManager->addEventHandler(fd, Calls::onEvent, nullptr, nullptr, EPOLLIN);
  fillUp(mManager->removeFd());
  recording::clear();
  mManager->removeEventHandler(fd, true, nullptr, nullptr);
  EXPECT_EQ((Entries{{3, text("removeEventHandler(int fd: %d) EX", fd)},
                     {6, text("Error in rem write. rv: -1, error: %s, for fd[%d]", strerror(EAGAIN),
                              mManager->removeFd())}}),
            log());
  mManager->processEvents(nullptr);
  EXPECT_TRUE(isClosed(fd));
}

struct ChainedClose {
  orb::utils::EventManager& manager;
  int firstFd;
  int secondFd;
};

TEST_F(EventManagerRemovalTest, RemovalRequestedDuringThePassIsHandledByIt) {
  ChainedClose chain{*mManager, idleFd(), idleFd()};
  mManager->addEventHandler(chain.firstFd, Calls::onEvent, nullptr, nullptr, EPOLLIN);
  mManager->removeEventHandler(
      chain.firstFd, true,
      [](void* data) {
        ChainedClose& self = *static_cast<ChainedClose*>(data);
        close(self.firstFd);
        self.manager.immediatelyRemoveEventHandler(self.secondFd);
      },
      &chain);
  recording::clear();
  mManager->processEvents(nullptr);
  EXPECT_EQ((Entries{{3, "there are 1 file descriptor(s) with events pending"},
                     {3, "processRemove enter"},
                     removing(chain.firstFd),
                     {3, text("immediatelyRemoveEventHandler(int fd: %d) EX", chain.secondFd)},
                     {3, text("Closed %d", chain.firstFd)},
                     clearing(chain.firstFd),
                     {3, text("updateEpollFd not finished, repeating: %p",
                              static_cast<void*>(mManager.get()))},
                     removing(chain.secondFd),
                     {6, text("Cannot remove event handler errno %d", ENOENT)},
                     {3, text("Closed %d", chain.secondFd)},
                     clearing(chain.secondFd),
                     {3, "processRemove exit"}}),
            log());
}

TEST_F(EventManagerRemovalTest, OwnerCanRunThePassItself) {
  const int fd = idleFd();
  mManager->addEventHandler(fd, Calls::onEvent, nullptr, nullptr, EPOLLIN);
  mManager->removeEventHandler(fd, true, nullptr, nullptr);
  runRemovals();
  EXPECT_TRUE(isClosed(fd));
  recording::clear();
  pass();
  EXPECT_TRUE(log().empty());
}

TEST_F(EventManagerRemovalTest, DestructionDropsPendingRemovalsAndLeavesDescriptorsOpen) {
  const int fd = idleFd();
  mManager->addEventHandler(fd, Calls::onEvent, nullptr, nullptr, EPOLLIN);
  mManager->removeEventHandler(fd, true, nullptr, nullptr);
  const int wakeFd = mManager->wakeFd();
  const int removeFd = mManager->removeFd();
  recording::clear();
  destroyManager();  // checks that the manager's two are still open
  EXPECT_EQ((Entries{{3, "EventManager: dtor"},
                     {3, text("immediatelyRemoveEventHandler(int fd: %d) EX", wakeFd)},
                     {3, text("immediatelyRemoveEventHandler(int fd: %d) EX", removeFd)}}),
            log());
  EXPECT_TRUE(isClosed(mEpollFd));
  EXPECT_TRUE(isOpen(fd));
  close(fd);
}

TEST_F(EventManagerRemovalTest, ThreadsMayRegisterAndRemoveWhileTheLoopRuns) {
  constexpr int kThreads = 3;
  constexpr int kRounds = 200;
  static std::atomic<int> dispatched;
  dispatched = 0;
  std::atomic<bool> stop{false};
  std::thread loop([this, &stop] {
    while (!stop) mManager->processEvents(nullptr);
  });
  std::vector<std::thread> users;
  for (int i = 0; i < kThreads; ++i) {
    users.emplace_back([this] {
      for (int round = 0; round < kRounds; ++round) {
        const int fd = readyFd();
        mManager->addEventHandler(
            fd, [](int, void*) { ++dispatched; }, nullptr, nullptr, EPOLLIN);
        mManager->wake();
        mManager->removeEventHandler(fd, true, nullptr, nullptr);
      }
    });
  }
  for (std::thread& user : users) user.join();
  stop = true;
  mManager->wake();
  loop.join();
  // Removals that were requested after the last pass. A pass need not reach them: it handles four
  // descriptors at a time, and hundreds may be ready.
  runRemovals();
  EXPECT_EQ(0, mManager->getNumRegisteredFds());
}

}  // namespace
