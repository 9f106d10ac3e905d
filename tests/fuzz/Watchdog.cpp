// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "Watchdog.h"

#include <pthread.h>
#include <signal.h>

#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <mutex>
#include <thread>

namespace {

using Clock = std::chrono::steady_clock;
constexpr std::chrono::seconds kPatience(60);

// The steps under way and the thread that looks after them. Never destroyed: the thread goes on
// until the process ends.
class Kennel {
 public:
  Kennel() {
    std::thread([this] { watch(); }).detach();
  }

  void enter(const void* step, const char* name) {
    const std::lock_guard<std::mutex> lock(mMutex);
    mSteps[step] = {name, pthread_self(), Clock::now() + kPatience};
  }
  void leave(const void* step) {
    const std::lock_guard<std::mutex> lock(mMutex);
    mSteps.erase(step);
  }

 private:
  struct Entry {
    const char* name;
    pthread_t thread;
    Clock::time_point deadline;
  };

  void watch() {
    std::unique_lock<std::mutex> lock(mMutex);
    for (;;) {
      for (const auto& [step, entry] : mSteps) {
        if (Clock::now() < entry.deadline) continue;
        std::fprintf(stderr, "hangs: %s\n", entry.name);
        pthread_kill(entry.thread,
                     SIGABRT);  // there, for what is shown is the stack of that thread
        mWake.wait_for(lock, kPatience);
        std::abort();
      }
      mWake.wait_for(lock, std::chrono::seconds(1));
    }
  }

  std::mutex mMutex;  // guards mSteps
  std::condition_variable mWake;
  std::map<const void*, Entry> mSteps;
};

Kennel& kennel() {
  static Kennel* const instance = new Kennel;
  return *instance;
}

}  // namespace

void Watchdog::replaceAlarm() {
  sigset_t alarm;
  sigemptyset(&alarm);
  sigaddset(&alarm, SIGALRM);
  pthread_sigmask(SIG_BLOCK, &alarm, nullptr);
}

Watchdog::Step::Step(const char* name) { kennel().enter(this, name); }

Watchdog::Step::~Step() { kennel().leave(this); }
