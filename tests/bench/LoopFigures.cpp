// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "LoopFigures.h"

#include <sys/timerfd.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <thread>
#include <vector>

#include "EventManager.h"
#include "Gate.h"
#include "OrbEventHandler.h"
#include "OrbTimer.h"
#include "UniqueFd.h"

namespace {

using Clock = std::chrono::steady_clock;

double nanosecondsSince(Clock::time_point start) {
  return std::chrono::duration<double, std::nano>(Clock::now() - start).count();
}

class Handler : public orb::utils::OrbEventHandler<uint64_t> {
 public:
  explicit Handler(orb::utils::EventManager& manager)
      : OrbEventHandler("bench", nullptr, &manager) {}
  void handleEvent(uint64_t item) override {
    if (item == last) gate.raise();
  }

  Gate gate;
  uint64_t last = 0;  // the last number; set before the posts
};

// The event loop on its own thread, as the SDK worker runs it.
class Loop {
 public:
  Loop()
      : mHandler(mManager), mThread([this] {
          while (mRunning) mManager.processEvents(nullptr);
        }) {}
  Loop(const Loop&) = delete;
  Loop& operator=(const Loop&) = delete;
  ~Loop() {
    mRunning = false;
    mManager.wake();
    mThread.join();
  }

  // Waits for each item before it posts the next one.
  void ping(uint64_t count) {
    mHandler.last = 1;
    for (uint64_t i = 0; i < count; ++i) {
      mHandler.postEvent(1);
      mHandler.gate.wait();
    }
  }
  // Waits for the last item only.
  void flood(uint64_t count) {
    mHandler.last = count;
    for (uint64_t i = 1; i <= count; ++i) mHandler.postEvent(i);
    mHandler.gate.wait();
  }

 private:
  orb::utils::EventManager mManager;
  Handler mHandler;
  std::atomic<bool> mRunning{true};
  std::thread mThread;
};

void printLoopFigure(const char* name, void (Loop::*work)(uint64_t), uint64_t count) {
  Loop loop;
  (loop.*work)(std::max<uint64_t>(1, count / 10));
  const Clock::time_point start = Clock::now();
  (loop.*work)(count);
  figures::put(name, nanosecondsSince(start) / static_cast<double>(count));
}

constexpr long kLongestMs = 20;
constexpr long kFarMs = 3600000;

size_t fired = 0;

int fire(void*) {
  ++fired;
  return -1;
}

void waitMs(long ms) {
  const UniqueFd clock(timerfd_create(CLOCK_MONOTONIC, TFD_CLOEXEC));
  itimerspec time = {};
  time.it_value.tv_sec = ms / 1000;
  time.it_value.tv_nsec = ms % 1000 * 1000000;
  uint64_t times = 0;
  if (timerfd_settime(clock.get(), 0, &time, nullptr) != 0 ||
      read(clock.get(), &times, sizeof times) != sizeof times) {
    std::perror("timerfd");
    std::exit(EXIT_FAILURE);
  }
}

struct TimerTimes {
  double add, fire;
};

TimerTimes addAndFire(OrbTimer& timer, std::mt19937& random, size_t count) {
  std::vector<long> delays(count);
  for (long& delay : delays) delay = 1 + static_cast<long>(random() % kLongestMs);
  Clock::time_point start = Clock::now();
  for (const long delay : delays) timer.addTimedCallback(delay, fire, nullptr);
  const double add = nanosecondsSince(start) / static_cast<double>(count);
  waitMs(kLongestMs + 5);
  fired = 0;
  start = Clock::now();
  timer.processEvents();
  const double run = nanosecondsSince(start) / static_cast<double>(count);
  if (fired != count) {
    std::fprintf(stderr, "%zu of %zu timers fired\n", fired, count);
    std::exit(EXIT_FAILURE);
  }
  return {add, run};
}

double removal(OrbTimer& timer, std::mt19937& random, size_t count) {
  std::vector<int> ids(count);
  for (int& id : ids) {
    id = timer.addTimedCallback(kFarMs + static_cast<long>(random() % 1000), fire, nullptr);
  }
  const size_t removals = count / 10;
  const Clock::time_point start = Clock::now();
  for (size_t i = 0; i < removals; ++i) timer.removeTimedCallback(ids[i * 10]);
  return nanosecondsSince(start) / static_cast<double>(removals);
}

}  // namespace

void figures::put(const char* name, double nanoseconds) {
  std::printf("%s %.6g ns\n", name, nanoseconds);
  std::fflush(stdout);
}

void figures::printLoop(bool brief) {
  printLoopFigure("loop1.project.ping", &Loop::ping, brief ? 100 : 100000);
  printLoopFigure("loop1.project.flood", &Loop::flood, brief ? 100 : 500000);
}

void figures::dispatch(int count) {
  orb::utils::EventManager manager;
  Handler handler(manager);
  for (int i = 1; i <= count; ++i) {
    handler.postEvent(static_cast<uint64_t>(i));
    manager.processEvents(nullptr);
  }
}

void figures::printTimers(bool brief) {
  const size_t count = brief ? 100 : 10000;
  OrbTimer timer(nullptr);
  std::mt19937 random(1);  // the same delays in every run
  // The least of all rounds; more than that is other load on the machine.
  TimerTimes best = addAndFire(timer, random, count);
  for (int round = 1; round < (brief ? 1 : 5); ++round) {
    const TimerTimes times = addAndFire(timer, random, count);
    best = {std::min(best.add, times.add), std::min(best.fire, times.fire)};
  }
  put("timer.project.add", best.add);
  put("timer.project.fire", best.fire);
  put("timer.project.remove", removal(timer, random, count));
}
