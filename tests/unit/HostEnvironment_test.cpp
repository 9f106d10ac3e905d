// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
//
// A program can change its environment at any time while the library's threads log. So the
// desktop's stand-ins read their variables only when they are loaded.
#include <android/log.h>
#include <cutils/properties.h>
#include <diag/diag.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <stdlib.h>
#include <unistd.h>

#include <atomic>
#include <string>
#include <thread>
#include <vector>

#include "Built.h"

namespace {

template <class Function>
Function* find(const char* library, const char* symbol) {
  void* const handle = dlopen(built(library).c_str(), RTLD_NOW | RTLD_LOCAL);
  EXPECT_NE(nullptr, handle) << dlerror();
  return reinterpret_cast<Function*>(dlsym(handle, symbol));
}

// The environment is not visible, but the stand-in works completely.
class HiddenStandardError {
 public:
  HiddenStandardError() : mSaved(dup(STDERR_FILENO)) {
    const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
    dup2(nowhere, STDERR_FILENO);
    close(nowhere);
  }
  ~HiddenStandardError() {
    dup2(mSaved, STDERR_FILENO);
    close(mSaved);
  }
  HiddenStandardError(const HiddenStandardError&) = delete;
  HiddenStandardError& operator=(const HiddenStandardError&) = delete;

 private:
  const int mSaved;
};

// Lets the environment grow (so that it moves in memory), changes it in place, and removes it.
void changeEnvironment(int rounds) {
  constexpr int kVariables = 300;
  static char given[] = "ORB_TEST_GIVEN=value";
  for (int round = 0; round < rounds; ++round) {
    for (int i = 0; i < kVariables; ++i) {
      const std::string name = "ORB_TEST_" + std::to_string(i);
      ASSERT_EQ(0, setenv(name.c_str(), std::to_string(round).c_str(), 1));
    }
    ASSERT_EQ(0, putenv(given));
    for (int i = 0; i < kVariables; i += 2)
      ASSERT_EQ(0, unsetenv(("ORB_TEST_" + std::to_string(i)).c_str()));
    ASSERT_EQ(0, clearenv());
  }
}

TEST(HostEnvironment, MayChangeWhileThreadsLog) {
  constexpr int kRounds = 200;
  setenv("ORB_DIAG_FILE", "/dev/null", 1);
  const auto print = find<decltype(__android_log_print)>(HOST_LIBLOG, "__android_log_print");
  const auto property = find<decltype(property_get)>(HOST_LIBCUTILS, "property_get");
  const auto wanted = find<decltype(log_status)>(HOST_LIBDIAG, "log_status");
  const auto allocate = find<decltype(log_alloc)>(HOST_LIBDIAG, "log_alloc");
  const auto commit = find<decltype(log_commit)>(HOST_LIBDIAG, "log_commit");
  ASSERT_TRUE(print && property && wanted && allocate && commit);

  std::atomic<bool> over{false};
  std::atomic<int> working{0};
  const auto log = [&] {
    ++working;
    for (unsigned i = 0; !over; ++i) {
      print(ANDROID_LOG_ERROR, "orb", "line %u", i);
      if (wanted(0x1E15) == 1) commit(allocate(0x1E15, 64));
      char value[PROPERTY_VALUE_MAX];
      property("persist.vendor.data.orb.logging", value, "none");
    }
  };
  const HiddenStandardError hidden;
  std::vector<std::thread> threads;
  for (int i = 0; i < 3; ++i) threads.emplace_back(log);
  while (working < 3) std::this_thread::yield();
  changeEnvironment(kRounds);
  over = true;
  for (std::thread& thread : threads) thread.join();
}

}  // namespace
