// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "Process.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <thread>

#include "UniqueFd.h"

namespace {

// The exit status of @p body in a forked child.
template <class Body>
int inChild(const Body& body) {
  const pid_t child = fork();
  if (child == 0) _exit(body());
  int status = -1;
  EXPECT_EQ(child, waitpid(child, &status, 0));
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

TEST(Process, IsTheSameWithinAProcess) { EXPECT_EQ(currentProcess(), currentProcess()); }

TEST(Process, IsAnotherInAForkedChild) {
  const uint64_t here = currentProcess();
  EXPECT_EQ(1, inChild([here] { return currentProcess() != here ? 1 : 0; }));
}

TEST(Process, IsAnotherInAChildMadeWithoutForkHandlers) {
  const uint64_t here = currentProcess();
  const long child = syscall(SYS_clone, SIGCHLD, nullptr, nullptr, nullptr, nullptr);
  if (child == 0) _exit(currentProcess() != here && currentProcess() == currentProcess() ? 1 : 0);
  int status = -1;
  ASSERT_EQ(child, waitpid(static_cast<pid_t>(child), &status, 0));
  EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 1) << status;
  EXPECT_EQ(here, currentProcess());
}

TEST(ThreadIds, AreThoseOfEachThread) {
  const ThreadIds here = currentThread();
  EXPECT_EQ(getpid(), here.process);
  EXPECT_EQ(gettid(), here.thread);
  std::thread([&here] {
    for (int i = 0; i < 2; ++i) {
      EXPECT_EQ(getpid(), currentThread().process);
      EXPECT_EQ(gettid(), currentThread().thread);
    }
    EXPECT_NE(here.thread, currentThread().thread);
  }).join();
  EXPECT_EQ(here.thread, currentThread().thread);
}

TEST(ThreadIds, AreAskedForAnewInAForkedChild) {
  currentThread();
  EXPECT_EQ(1, inChild([] {
              const ThreadIds ids = currentThread();
              return ids.process == getpid() && ids.thread == gettid() ? 1 : 0;
            }));
}

TEST(ProcessMark, BelongsToNobodyAtFirst) {
  const ProcessMark mark;
  EXPECT_FALSE(mark.isSet());
  EXPECT_FALSE(mark.isHere());
  EXPECT_FALSE(mark.isElsewhere());
  EXPECT_FALSE(mark.isForked());
  EXPECT_EQ(0, inChild([&] { return mark.isForked() ? 1 : 0; }));
}

TEST(ProcessMark, KnowsItsProcessFromAChild) {
  ProcessMark mark;
  mark.set();
  EXPECT_TRUE(mark.isHere());
  EXPECT_FALSE(mark.isElsewhere());
  EXPECT_FALSE(mark.isForked());
  EXPECT_EQ(
      1, inChild([&] { return mark.isElsewhere() && mark.isForked() && !mark.isHere() ? 1 : 0; }));
}

TEST(ProcessMark, KnowsItsProcessFromAChildsChild) {
  ProcessMark mark;
  mark.set();
  EXPECT_EQ(1, inChild([&] {
              return inChild([&] { return mark.isElsewhere() && mark.isForked() ? 1 : 0; });
            }));
}

TEST(ProcessMark, MovesToTheProcessThatSetsItAnew) {
  ProcessMark mark;
  mark.set();
  EXPECT_EQ(1, inChild([&] {
              mark.set();
              return mark.isHere() && !mark.isForked() ? 1 : 0;
            }));
}

TEST(ProcessMark, StaysWithTheFirstProcess) {
  ProcessMark mark;
  mark.setOnce();
  EXPECT_EQ(1, inChild([&] {
              mark.setOnce();
              return mark.isElsewhere() ? 1 : 0;
            }));
}

// Restores the standard streams at the end of the scope.
class ClosedStreams {
 public:
  ClosedStreams() {
    for (int fd = 0; fd <= STDERR_FILENO; ++fd) {
      mSaved[fd] = fcntl(fd, F_DUPFD_CLOEXEC, 10);
      close(fd);
    }
  }
  ClosedStreams(const ClosedStreams&) = delete;
  ClosedStreams& operator=(const ClosedStreams&) = delete;
  ~ClosedStreams() {
    for (int fd = 0; fd <= STDERR_FILENO; ++fd) {
      dup2(mSaved[fd], fd);
      close(mSaved[fd]);
    }
  }

 private:
  int mSaved[STDERR_FILENO + 1];
};

TEST(AboveStandardStreams, MovesADescriptorThatGotANumberOfTheirs) {
  int opened = -1;
  int moved = -1;
  bool freed = false;
  int flags = 0;
  {
    const ClosedStreams closed;
    opened = open("/dev/null", O_RDONLY);
    moved = aboveStandardStreams(opened);
    freed = fcntl(opened, F_GETFD) == -1;
    flags = fcntl(moved, F_GETFD);
  }
  EXPECT_EQ(0, opened);
  EXPECT_GT(moved, STDERR_FILENO);
  EXPECT_TRUE(freed);
  EXPECT_EQ(FD_CLOEXEC, flags);
  EXPECT_EQ(0, close(moved));
}

TEST(AboveStandardStreams, LeavesOthersAndFailuresAlone) {
  const UniqueFd fd(open("/dev/null", O_RDONLY | O_CLOEXEC));
  ASSERT_GT(fd.get(), STDERR_FILENO);
  EXPECT_EQ(fd.get(), aboveStandardStreams(fd.get()));
  EXPECT_EQ(-1, aboveStandardStreams(-1));
}

// Another thread that prints meanwhile must not see it, either.
TEST(AboveStandardStreams, NothingIsBehindTheirNumbersWhileSomethingIsOpened) {
  int opened = -1;
  int taken = 0;
  int unusable = 0;
  int freed = 0;
  {
    const ClosedStreams closed;
    const int result = openAboveStandardStreams([&] {
      for (int fd = 0; fd <= STDERR_FILENO; ++fd) {
        taken += fcntl(fd, F_GETFD) == FD_CLOEXEC ? 1 : 0;
        unusable += write(fd, "x", 1) == -1 && errno == EBADF ? 1 : 0;
      }
      opened = open("/dev/null", O_RDONLY | O_CLOEXEC);
      return opened;
    });
    for (int fd = 0; fd <= STDERR_FILENO; ++fd) freed += fcntl(fd, F_GETFD) == -1 ? 1 : 0;
    close(result);
  }
  EXPECT_GT(opened, STDERR_FILENO) << "it need not be moved";
  EXPECT_EQ(3, taken);
  EXPECT_EQ(3, unusable);
  EXPECT_EQ(3, freed);
}

TEST(AboveStandardStreams, OpenStreamsStayAsTheyAreWhileSomethingIsOpened) {
  const int next = dup(STDERR_FILENO);  // the lowest free number
  close(next);
  const int fd = openAboveStandardStreams([] { return open("/dev/null", O_RDONLY | O_CLOEXEC); });
  EXPECT_EQ(next, fd);
  EXPECT_EQ(0, close(fd));
  EXPECT_EQ(-1, openAboveStandardStreams([] { return -1; }));
}

}  // namespace
