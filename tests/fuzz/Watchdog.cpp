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

constexpr int kPatience = 60;  // seconds

// The steps under way, and the thread that watches them. Never destroyed, because the thread runs
// until the process ends.
class Kennel {
 public:
  Kennel() {
    std::thread([this] { watch(); }).detach();
  }

  void enter(const void* step, const char* name) {
    const std::lock_guard<std::mutex> lock(mMutex);
    mSteps[step] = {name, pthread_self(), kPatience};
  }
  void leave(const void* step) {
    const std::lock_guard<std::mutex> lock(mMutex);
    mSteps.erase(step);
  }

 private:
  struct Entry {
    const char* name;
    pthread_t thread;
    int secondsLeft;
  };

  void watch() {
    std::unique_lock<std::mutex> lock(mMutex);
    for (;;) {
      // Counts only seconds in which this thread ran, because the process may be stopped for a
      // while.
      mWake.wait_for(lock, std::chrono::seconds(1));
      for (auto& [step, entry] : mSteps) {
        if (--entry.secondsLeft > 0) continue;
        std::fprintf(stderr, "hangs: %s\n", entry.name);
        // On the step's thread, because the report shows the stack of the thread that gets the
        // signal.
        pthread_kill(entry.thread, SIGABRT);
        mWake.wait_for(lock, std::chrono::seconds(kPatience));
        std::abort();
      }
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
