// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
//
// Events that the loop of the event manager cannot use.
#include <sys/socket.h>

#include "EventManagerFixture.h"

namespace {

// One unusable event: the owner is notified, then the descriptor is removed.
class UnusableEventTest : public EventManagerTest {
 protected:
  void expectRemoved(int fd, int events, orb::utils::EventCallback callback, const Entries& lines) {
    Calls calls;
    mManager->addEventHandler(fd, callback, &calls, Calls::onClose, events);
    recording::clear();
    pass();
    Entries expected{{3, "there are 1 file descriptor(s) with events pending"}};
    expected.insert(expected.end(), lines.begin(), lines.end());
    expected.emplace_back(3, text("immediatelyRemoveEventHandler(int fd: %d) EX", fd));
    EXPECT_EQ(expected, log());
    EXPECT_TRUE(calls.events.empty());
    EXPECT_EQ(std::vector<int>{fd}, calls.closes);
    EXPECT_EQ(0, mManager->getNumRegisteredFds());
    pass();
    EXPECT_TRUE(isClosed(fd));
  }

  static Entry processing(int fd, int events) {
    return {3, text("processing event number: 0, handling %d for %d", events, fd)};
  }
};

TEST_F(UnusableEventTest, HangUpRemovesTheDescriptor) {
  int ends[2];
  ASSERT_EQ(0, pipe2(ends, O_CLOEXEC));
  close(ends[1]);
  expectRemoved(
      ends[0], EPOLLIN | EPOLLHUP, Calls::onEvent,
      {processing(ends[0], EPOLLHUP), {6, text("file descriptor '%d' sent HUP/ERR.", ends[0])}});
}

TEST_F(UnusableEventTest, ErrorRemovesTheDescriptor) {
  int ends[2];
  ASSERT_EQ(0, pipe2(ends, O_CLOEXEC));
  close(ends[0]);
  expectRemoved(
      ends[1], EPOLLIN, Calls::onEvent,
      {processing(ends[1], EPOLLERR), {6, text("file descriptor '%d' sent HUP/ERR.", ends[1])}});
}

TEST_F(UnusableEventTest, PeerThatStopsWritingRemovesTheDescriptor) {
  int ends[2];
  ASSERT_EQ(0, socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends));
  shutdown(ends[1], SHUT_WR);
  expectRemoved(ends[0], EPOLLIN | EPOLLRDHUP, Calls::onEvent,
                {processing(ends[0], EPOLLIN | EPOLLRDHUP),
                 {6, text("file descriptor '%d' sent HUP/ERR.", ends[0])}});
  close(ends[1]);
}

TEST_F(UnusableEventTest, EventWithoutInputRemovesTheDescriptor) {
  const int fd = idleFd();
  expectRemoved(fd, EPOLLOUT, Calls::onEvent,
                {processing(fd, EPOLLOUT),
                 {6, "Unhandled epoll event: EPOLLOUT  [flags 04]. SHOULD NOT HAPPEN"}});
}

TEST_F(UnusableEventTest, MissingCallbackRemovesTheDescriptor) {
  const int fd = readyFd();
  Calls calls;
  mManager->addEventHandler(fd, nullptr, &calls, Calls::onClose, EPOLLIN);
  recording::clear();
  pass();
  EXPECT_EQ((Entries{{3, "there are 1 file descriptor(s) with events pending"},
                     processing(fd, EPOLLIN),
                     {3, text("file descriptor '%d' is processing events [callback:%p, data:%p]",
                              fd, static_cast<void*>(nullptr), static_cast<void*>(&calls))},
                     {6, text("no callback registered fd:%d. SHOULD NOT HAPPEN.", fd)},
                     {3, text("immediatelyRemoveEventHandler(int fd: %d) EX", fd)}}),
            log());
  EXPECT_EQ(std::vector<int>{fd}, calls.closes);
  pass();
  EXPECT_TRUE(isClosed(fd));
}

TEST_F(EventManagerTest, ApprovedDescriptorWithoutHandlerIsRemoved) {
  const int fd = readyFd();
  mManager->addEventHandler(fd, Calls::onEvent, nullptr, nullptr, EPOLLIN);
  mManager->removeEventHandler(fd, false, nullptr, nullptr);  // still in epoll
  mManager->lockRecursiveMutex();
  mManager->addApprovedFd(fd);
  mManager->unlockRecursiveMutex();
  recording::clear();
  pass();
  EXPECT_TRUE(logged(
      6, text("file descriptor '%d' does not have an event handler registered. SHOULD NOT HAPPEN",
              fd)));
  EXPECT_TRUE(logged(3, text("immediatelyRemoveEventHandler(int fd: %d) EX", fd)));
  EXPECT_TRUE(isClosed(fd));
}

TEST_F(EventManagerTest, EventNamesComeInFixedOrderEachWithABlank) {
  EXPECT_EQ("", EventManager::eventNames(0));
  EXPECT_EQ("", EventManager::eventNames(EPOLLIN | EPOLLRDHUP));
  EXPECT_EQ("EPOLLOUT EPOLLPRI EPOLLERR EPOLLHUP EPOLLET ",
            EventManager::eventNames(0x80000000u | EPOLLHUP | EPOLLERR | EPOLLPRI | EPOLLOUT));
  EXPECT_EQ("EPOLLPRI EPOLLET ", EventManager::eventNames(EPOLLPRI | 0x80000000u));
}

}  // namespace
