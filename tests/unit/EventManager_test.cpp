// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "EventManager.h"

#include <signal.h>
#include <sys/resource.h>
#include <sys/time.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <thread>

#include "EventManagerFixture.h"

namespace {

TEST_F(EventManagerTest, ConstructionRegistersTheTwoInternalDescriptors) {
  const int wakeFd = mManager->wakeFd();
  const int removeFd = mManager->removeFd();
  EXPECT_EQ((Entries{
                {3, "EventManager: ctor"},
                {3, addLine(wakeFd, EventManager::clearRead, nullptr, nullptr, 0x11)},
                {3, text("Added event handler %d", wakeFd)},
                {3, addLine(removeFd, EventManager::processRemove, nullptr, nullptr, 0x11)},
                {3, text("Added event handler %d", removeFd)},
                {3, text("EventManager is ready. epollFd:%d", mEpollFd)},
            }),
            log());
}

TEST_F(EventManagerTest, DescriptorsAreCloseOnExecAndEventfdsNonBlocking) {
  for (const int fd : {mEpollFd, mManager->wakeFd(), mManager->removeFd()}) {
    EXPECT_EQ(FD_CLOEXEC, fcntl(fd, F_GETFD));
  }
  for (const int fd : {mManager->wakeFd(), mManager->removeFd()}) {
    EXPECT_NE(0, fcntl(fd, F_GETFL) & O_NONBLOCK);
  }
}

TEST_F(EventManagerTest, NothingIsRegisteredAfterConstruction) {
  recording::clear();
  EXPECT_EQ(0, mManager->getNumRegisteredFds());
  EXPECT_EQ((Entries{{3, text("Approved FD: %d", mManager->wakeFd())},
                     {3, text("Approved FD: %d", mManager->removeFd())}}),
            log());
}

void printLinesAtExit() {
  rlimit limit{};
  getrlimit(RLIMIT_NOFILE, &limit);
  limit.rlim_cur = limit.rlim_max;  // code that runs at exit may need descriptors
  setrlimit(RLIMIT_NOFILE, &limit);
  for (const recording::Line& line : recording::lines()) {
    std::fprintf(stderr, "%d%s %s\n", line.priority, line.hasTag ? " tagged" : "",
                 line.text.c_str());
  }
}

// Constructs a manager in a process that can open `descriptors` more descriptors.
void constructWith(int descriptors) {
  { const orb::utils::EventManager beforehand; }  // checkers look at new types through descriptors
  int last = -1;
  while (last < 100) last = open("/dev/null", O_RDONLY | O_CLOEXEC);  // no gaps below
  recording::clear();
  std::atexit(printLinesAtExit);
  rlimit limit{};
  getrlimit(RLIMIT_NOFILE, &limit);
  limit.rlim_cur = static_cast<rlim_t>(last + 1 + descriptors);
  setrlimit(RLIMIT_NOFILE, &limit);
  const orb::utils::EventManager manager;
}

constexpr int kExitMinusOne = 255;

TEST(EventManagerDeathTest, EndsTheProcessWithoutEpollInstance) {
  EXPECT_EXIT(constructWith(0), ::testing::ExitedWithCode(kExitMinusOne),
              "3 EventManager: ctor\n6 Cannot create epoll instance\n");
}

TEST(EventManagerDeathTest, EndsTheProcessWithoutWakeDescriptor) {
  EXPECT_EXIT(constructWith(1), ::testing::ExitedWithCode(kExitMinusOne),
              "3 EventManager: ctor\n6 Cannot create eventfd instance\n");
}

TEST(EventManagerDeathTest, EndsTheProcessWithoutRemoveDescriptor) {
  EXPECT_EXIT(constructWith(2), ::testing::ExitedWithCode(kExitMinusOne),
              "3 Added event handler [0-9]+\n6 Cannot create removeFd instance\n");
}

TEST_F(EventManagerTest, SecondRegistrationIsRefusedAndKeepsTheFirst) {
  const int fd = readyFd();
  Calls first;
  Calls second;
  EXPECT_TRUE(mManager->addEventHandler(fd, Calls::onEvent, &first, nullptr, EPOLLIN));
  recording::clear();
  EXPECT_FALSE(mManager->addEventHandler(fd, Calls::onEvent, &second, Calls::onClose, EPOLLIN));
  EXPECT_EQ((Entries{{3, addLine(fd, Calls::onEvent, &second, Calls::onClose, EPOLLIN)},
                     {5, text("fd=%d is already in handlers", fd)}}),
            log());
  pass();
  EXPECT_EQ(std::vector<int>{fd}, first.events);
  EXPECT_TRUE(second.events.empty());
  mManager->removeEventHandler(fd, true, nullptr, nullptr);
  pass();
}

TEST_F(EventManagerTest, RegistrationThatEpollRefusesIsRecordedAllTheSame) {
  const int fd = open("/proc/self/exe", O_RDONLY | O_CLOEXEC);  // epoll takes no regular files
  Calls calls;
  recording::clear();
  EXPECT_TRUE(mManager->addEventHandler(fd, Calls::onEvent, &calls, Calls::onClose, EPOLLIN));
  EXPECT_EQ((Entries{{3, addLine(fd, Calls::onEvent, &calls, Calls::onClose, EPOLLIN)},
                     {6, text("Cannot add event handler. err:%d", EPERM)}}),
            log());
  EXPECT_EQ(1, mManager->getNumRegisteredFds());
  EXPECT_FALSE(mManager->isWatched(fd));
  mManager->removeEventHandler(fd, true, nullptr, nullptr);
  EXPECT_EQ(std::vector<int>{fd}, calls.closes);
  pass();
  EXPECT_TRUE(logged(6, text("Cannot remove event handler errno %d", EPERM)));
  EXPECT_TRUE(logged(3, text("Closed %d", fd)));
  EXPECT_TRUE(isClosed(fd));
}

TEST_F(EventManagerTest, WatchesWhatIsAddedUntilItIsRemoved) {
  const int fd = idleFd();
  EXPECT_FALSE(mManager->isWatched(fd));
  mManager->addEventHandler(fd, Calls::onEvent, nullptr, nullptr, EPOLLIN);
  EXPECT_TRUE(mManager->isWatched(fd));
  mManager->removeEventHandler(fd, true, nullptr, nullptr);
  EXPECT_FALSE(mManager->isWatched(fd));
  pass();
}

TEST_F(EventManagerTest, CountListsApprovedDescriptorsInAscendingOrder) {
  const int low = idleFd();
  const int high = idleFd();
  mManager->addEventHandler(high, Calls::onEvent, nullptr, nullptr, EPOLLIN);
  mManager->addEventHandler(low, Calls::onEvent, nullptr, nullptr, EPOLLIN);
  recording::clear();
  EXPECT_EQ(2, mManager->getNumRegisteredFds());
  ASSERT_LT(low, high);
  EXPECT_EQ((Entries{{3, text("Approved FD: %d", mManager->wakeFd())},
                     {3, text("Approved FD: %d", mManager->removeFd())},
                     {3, text("Approved FD: %d", low)},
                     {3, text("Approved FD: %d", high)}}),
            log());
  for (const int fd : {low, high}) mManager->removeEventHandler(fd, true, nullptr, nullptr);
  pass();
}

TEST_F(EventManagerTest, MissingInternalDescriptorsAreReportedByTheCount) {
  mManager->lockRecursiveMutex();
  mManager->remApprovedFd(mManager->wakeFd());
  mManager->unlockRecursiveMutex();
  recording::clear();
  EXPECT_EQ(-1, mManager->getNumRegisteredFds());
  EXPECT_EQ((Entries{{6, "Invalid approvedFd size -1. Should not happen"},
                     {3, text("Approved FD: %d", mManager->removeFd())}}),
            log());
}

TEST_F(EventManagerTest, ApprovedSetAnswersForItsMembers) {
  mManager->lockRecursiveMutex();
  EXPECT_TRUE(mManager->isApprovedFd(mManager->wakeFd()));
  EXPECT_TRUE(mManager->isApprovedFd(mManager->removeFd()));
  EXPECT_FALSE(mManager->isApprovedFd(4711));
  mManager->addApprovedFd(4711);
  EXPECT_TRUE(mManager->isApprovedFd(4711));
  mManager->remApprovedFd(4711);
  EXPECT_FALSE(mManager->isApprovedFd(4711));
  mManager->unlockRecursiveMutex();
}

TEST_F(EventManagerTest, MutexIsRecursiveAndKeepsOtherThreadsOut) {
  const int fd = idleFd();
  mManager->lockRecursiveMutex();
  mManager->lockRecursiveMutex();
  std::thread other(
      [this, fd] { mManager->addEventHandler(fd, Calls::onEvent, nullptr, nullptr, EPOLLIN); });
  EXPECT_EQ(0, mManager->getNumRegisteredFds());
  mManager->unlockRecursiveMutex();
  EXPECT_EQ(0, mManager->getNumRegisteredFds());
  mManager->unlockRecursiveMutex();
  other.join();
  EXPECT_EQ(1, mManager->getNumRegisteredFds());
  mManager->removeEventHandler(fd, true, nullptr, nullptr);
  pass();
}

TEST_F(EventManagerTest, TimersRunWhenTheWaitTimesOut) {
  OrbTimer timer(nullptr);
  int runs = 0;
  timer.addTimedCallback(
      5, [](void* data) { return ++*static_cast<int*>(data), -1; }, &runs);
  recording::clear();
  mManager->processEvents(&timer);
  EXPECT_EQ(1, runs);
  EXPECT_TRUE(log().empty());
}

TEST_F(EventManagerTest, FailedWaitEndsThePassWithoutTimers) {
  const int notEpoll = open("/dev/null", O_RDONLY | O_CLOEXEC);
  const int epollFd = dup(mEpollFd);
  ASSERT_EQ(mEpollFd, dup2(notEpoll, mEpollFd));
  OrbTimer timer(nullptr);
  int runs = 0;
  timer.addTimedCallback(
      0, [](void* data) { return ++*static_cast<int*>(data), -1; }, &runs);
  recording::clear();
  mManager->processEvents(&timer);
  EXPECT_EQ((Entries{{6, "epoll_wait error"}}), log());
  EXPECT_EQ(0, runs);
  ASSERT_EQ(mEpollFd, dup2(epollFd, mEpollFd));
  mManager->processEvents(&timer);
  EXPECT_EQ(1, runs);
  close(epollFd);
  close(notEpoll);
}

TEST_F(EventManagerTest, SignalEndsThePassLikeAFailedWait) {
  struct sigaction action {};  // stays set: a signal may still be pending at the end
  action.sa_handler = [](int) {};
  ASSERT_EQ(0, sigaction(SIGALRM, &action, nullptr));
  const itimerval often{{0, 1000}, {0, 1000}};  // repeatedly, so that one comes during the wait
  ASSERT_EQ(0, setitimer(ITIMER_REAL, &often, nullptr));
  recording::clear();
  mManager->processEvents(nullptr);
  const itimerval never{};
  ASSERT_EQ(0, setitimer(ITIMER_REAL, &never, nullptr));
  EXPECT_EQ((Entries{{6, "epoll_wait error"}}), log());
}

TEST_F(EventManagerTest, WakeEndsAWait) {
  std::thread other([this] { mManager->wake(); });
  mManager->processEvents(nullptr);
  other.join();
  const int fd = mManager->wakeFd();
  EXPECT_TRUE(logged(3, "wake() EX"));
  EXPECT_TRUE(logged(3, text("processing event number: 0, handling 1 for %d", fd)));
  recording::clear();
  pass();  // the wake-up was consumed
  EXPECT_TRUE(log().empty());
}

TEST_F(EventManagerTest, WakeWithoutRoomIsLoggedAndStillWakes) {
  fillUp(mManager->wakeFd());
  recording::clear();
  mManager->wake();
  EXPECT_EQ((Entries{{3, "wake() EX"},
                     {5, text("Error in writing rv: -1, error: %s", strerror(EAGAIN))}}),
            log());
  mManager->processEvents(nullptr);
}

TEST_F(EventManagerTest, ClearReadEmptiesADescriptor) {
  const int fd = readyFd();
  recording::clear();
  EventManager::clearRead(fd, nullptr);
  uint64_t value = 0;
  EXPECT_EQ(-1, read(fd, &value, sizeof value));
  EXPECT_EQ(EAGAIN, errno);
  EXPECT_TRUE(log().empty());
  close(fd);
}

TEST_F(EventManagerTest, ClearReadTakesMoreThanOneChunk) {
  int ends[2];
  ASSERT_EQ(0, pipe2(ends, O_NONBLOCK | O_CLOEXEC));
  const std::string bytes(1000, 'x');
  ASSERT_EQ(1000, write(ends[1], bytes.data(), bytes.size()));
  EventManager::clearRead(ends[0], nullptr);
  char rest = 0;
  EXPECT_EQ(-1, read(ends[0], &rest, 1));
  close(ends[1]);
  EventManager::clearRead(ends[0], nullptr);  // returns at the end of the stream
  close(ends[0]);
}

TEST_F(EventManagerTest, ClearReadLogsAnUnexpectedError) {
  recording::clear();
  EventManager::clearRead(-1, nullptr);
  EXPECT_EQ((Entries{{5, "Error while clearing the read buffer on fd -1"}}), log());
}

TEST_F(EventManagerTest, ReadableDescriptorCallsItsCallback) {
  const int fd = readyFd();
  Calls calls;
  mManager->addEventHandler(fd, Calls::onEvent, &calls, Calls::onClose, EPOLLIN);
  recording::clear();
  mManager->processEvents(nullptr);
  EXPECT_EQ(
      (Entries{{3, "there are 1 file descriptor(s) with events pending"},
               {3, text("processing event number: 0, handling 1 for %d", fd)},
               {3, text("file descriptor '%d' is processing events [callback:%p, data:%p]", fd,
                        reinterpret_cast<void*>(Calls::onEvent), static_cast<void*>(&calls))}}),
      log());
  EXPECT_EQ(std::vector<int>{fd}, calls.events);
  EXPECT_TRUE(calls.closes.empty());
  mManager->removeEventHandler(fd, true, nullptr, nullptr);
  pass();
}

TEST_F(EventManagerTest, PassDispatchesFourDescriptorsAtMost) {
  Calls calls;
  std::vector<int> fds;
  for (int i = 0; i < 6; ++i) fds.push_back(readyFd());
  for (const int fd : fds) {
    mManager->addEventHandler(fd, Calls::onEvent, &calls, nullptr, EPOLLIN);
  }
  recording::clear();
  pass();
  EXPECT_EQ(4u, calls.events.size());
  for (int left = 4; left > 0; --left) {
    EXPECT_EQ(1u,
              recording::count(text("there are %d file descriptor(s) with events pending", left)));
  }
  pass();
  EXPECT_EQ(8u, calls.events.size());
  for (const int fd : fds) {  // the two that had to wait were handled in the second pass
    EXPECT_EQ(1, std::count(calls.events.begin(), calls.events.begin() + 6, fd));
    mManager->removeEventHandler(fd, true, nullptr, nullptr);
  }
  while (recording::count("processRemove exit") == 0) pass();
}

// The log lines when a timer is due.
struct AtTimer {
  size_t calls = 0;
  Entries lines;

  static int onTimer(void* data) {
    AtTimer& self = *static_cast<AtTimer*>(data);
    ++self.calls;
    for (const recording::Line& line : recording::lines()) {
      self.lines.emplace_back(line.priority, line.text);
    }
    return -1;
  }
};

TEST_F(EventManagerTest, PassThatWakesForARemovalAloneRunsTimersThenTheLoopThenTheRemoval) {
  const int fd = idleFd();
  mManager->addEventHandler(fd, Calls::onEvent, nullptr, nullptr, EPOLLIN);
  mManager->removeEventHandler(fd, true, nullptr, nullptr);
  AtTimer timerSaw;
  OrbTimer timer(nullptr);
  timer.addTimedCallback(0, AtTimer::onTimer, &timerSaw);
  recording::clear();
  mManager->processEvents(&timer);
  EXPECT_EQ(1u, timerSaw.calls);
  const Entries pass = {{3, "there are 1 file descriptor(s) with events pending"},
                        {3, "processRemove enter"},
                        {3, text("removing %d from epollFd", fd)},
                        {3, text("Closed %d", fd)},
                        {3, text("Clearing local update FD:%d", fd)},
                        {3, "processRemove exit"}};
  for (const Entry& line : timerSaw.lines) {
    EXPECT_EQ(0, std::count(pass.begin(), pass.end(), line)) << line.second << " before the timer";
  }
  const Entries all = log();
  ASSERT_LE(pass.size(), all.size());
  EXPECT_EQ(pass, Entries(all.end() - static_cast<ptrdiff_t>(pass.size()), all.end()));
  EXPECT_TRUE(isClosed(fd));
}

}  // namespace
