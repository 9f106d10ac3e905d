// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
// A child made by fork() while the socket tables are in use must still end. The child is made
// inside the library while the lock is held, so the test does not depend on timing.
#include <gtest/gtest.h>
#include <poll.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <functional>
#include <new>

#include "IpcTestSupport.h"

namespace {

std::function<void()>* atNextAllocation = nullptr;

}  // namespace

// Replaces the function of the C++ library.
void* operator new(size_t size) {
  if (atNextAllocation != nullptr) {
    const auto* const action = atNextAllocation;
    atNextAllocation = nullptr;
    (*action)();
  }
  void* const memory = malloc(size);
  if (memory == nullptr) throw std::bad_alloc();
  return memory;
}
void operator delete(void* memory) noexcept { free(memory); }
void operator delete(void* memory, size_t) noexcept { free(memory); }

namespace {

using namespace ipctest;

constexpr int kStatus = 7;

// The first use creates the tables while their lock is held.
TEST(ProcessUtilsForkTest, ChildOfAProcessThatHeldTheTablesEndsByExit) {
  int ends[2] = {-1, -1};
  ASSERT_EQ(0, pipe2(ends, O_CLOEXEC));
  pid_t child = -1;
  std::function<void()> forkAndExit = [&child] {
    child = fork();
    if (child == 0) exit(kStatus);
  };
  atNextAllocation = &forkAndExit;
  const auto globals = getProcessUtilsGlobals();
  ASSERT_EQ(nullptr, atNextAllocation) << "the tables were there before";
  ASSERT_LT(0, child);
  close(ends[1]);  // now only the child has it open
  pollfd end = {ends[0], 0, 0};
  const int ended = poll(&end, 1, static_cast<int>(std::chrono::milliseconds(kPatience).count()));
  if (ended != 1) kill(child, SIGKILL);
  int status = 0;
  ASSERT_EQ(child, waitpid(child, &status, 0));
  close(ends[0]);
  EXPECT_EQ(1, ended) << "the child did not end by itself";
  EXPECT_TRUE(WIFEXITED(status));
  EXPECT_EQ(kStatus, WEXITSTATUS(status));
}

}  // namespace
