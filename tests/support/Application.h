// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <dirent.h>
#include <orb/sdl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <vector>

#include "ComesTo.h"

// What an application does with plain C callbacks: state of its own behind a lock. Every callback
// is recorded with its thread; a test may hang an action on the next one, which then runs inside
// it.
namespace application {

struct Event {
  enum Kind { Status, StatusV2, Report, Criteria } kind;
  int value;
  pid_t thread;
};

class State {
 public:
  void add(Event::Kind kind, int value) {
    std::function<void()> action;
    {
      const std::lock_guard<std::mutex> lock(mLock);
      mEvents.push_back({kind, value, static_cast<pid_t>(syscall(SYS_gettid))});
      if (mActionKind == kind && mAction) action.swap(mAction);
    }
    if (action) action();
    mChanged.notify_all();
  }
  // Runs @p action inside the next callback of this kind.
  void inNext(Event::Kind kind, std::function<void()> action) {
    const std::lock_guard<std::mutex> lock(mLock);
    mActionKind = kind;
    mAction = std::move(action);
  }
  bool waitFor(Event::Kind kind, int value, size_t times = 1) {
    std::unique_lock<std::mutex> lock(mLock);
    return mChanged.wait_for(lock, std::chrono::seconds(20),
                             [&] { return countLocked(kind, value) >= times; });
  }
  bool waitForAny(Event::Kind kind, size_t times) {
    std::unique_lock<std::mutex> lock(mLock);
    return mChanged.wait_for(lock, std::chrono::seconds(60), [&] {
      size_t seen = 0;
      for (const Event& event : mEvents) seen += event.kind == kind ? 1 : 0;
      return seen >= times;
    });
  }
  size_t total() {
    const std::lock_guard<std::mutex> lock(mLock);
    return mEvents.size();
  }
  std::vector<Event> events() {
    const std::lock_guard<std::mutex> lock(mLock);
    return mEvents;
  }
  void clear() {
    const std::lock_guard<std::mutex> lock(mLock);
    mEvents.clear();
    mAction = nullptr;
  }
  // For actions: tells the test that they are done.
  void done() {
    const std::lock_guard<std::mutex> lock(mLock);
    mDone = true;
    mChanged.notify_all();
  }
  bool waitDone() {
    std::unique_lock<std::mutex> lock(mLock);
    const bool done = mChanged.wait_for(lock, std::chrono::seconds(20), [&] { return mDone; });
    mDone = false;
    return done;
  }

 private:
  size_t countLocked(Event::Kind kind, int value) const {
    size_t count = 0;
    for (const Event& event : mEvents) count += event.kind == kind && event.value == value ? 1 : 0;
    return count;
  }
  std::mutex mLock;
  std::condition_variable mChanged;
  std::vector<Event> mEvents;
  Event::Kind mActionKind = Event::Status;
  std::function<void()> mAction;
  bool mDone = false;
};

inline State& state() {
  static State* instance = new State;  // callbacks may come while the process exits
  return *instance;
}

inline void onStatus(status_e status) { state().add(Event::Status, status); }
inline void onStatusV2(status_v2_e status) { state().add(Event::StatusV2, status); }
inline void onReport(LceEstimationReportStatus status, LceEstimationReport) {
  state().add(Event::Report, status);
}
inline void onCriteria(LceReportingCriteriaStatus status) { state().add(Event::Criteria, status); }

inline size_t entries(const char* directory) {
  size_t count = 0;
  DIR* dir = opendir(directory);
  while (dir != nullptr && readdir(dir) != nullptr) ++count;
  if (dir != nullptr) closedir(dir);
  return count;
}
inline size_t descriptors() { return entries("/proc/self/fd"); }
inline size_t threads() { return entries("/proc/self/task"); }

using ::comesTo;

}  // namespace application
