// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <functional>
#include <map>
#include <mutex>
#include <type_traits>
#include <utility>
#include <vector>

// Whether a recorder keeps its entries in order, or only counts equal ones: a long run must not
// keep all that it hears. What is counted needs an operator<.
enum class Keep { InOrder, Counts };

// What callbacks got: any thread adds, the test looks and waits. The next entry of some kind may
// bring an action, which then runs inside the callback. mMutex guards all and is free while the
// action runs.
template <class Entry, Keep kKeep = Keep::InOrder>
class Recorder {
 public:
  using List = std::vector<Entry>;
  using Which = std::function<bool(const Entry&)>;
  static constexpr std::chrono::seconds kPatience{20};
  static constexpr std::chrono::hours kWatched{24};  // a watchdog ends the wait

  // Callbacks of the C API have no context, so theirs is one of the process. Never destroyed: they
  // may come while the process exits.
  static Recorder& get() {
    static Recorder* const recorder = new Recorder;
    return *recorder;
  }

  void add(Entry entry) {
    std::function<void()> action;
    {
      const std::lock_guard<std::mutex> lock(mMutex);
      if (mAction && mActionFor(entry)) action.swap(mAction);
      if constexpr (kKeep == Keep::InOrder) {
        mEntries.push_back(std::move(entry));
      } else {
        ++mEntries[entry];
      }
      mChanged.notify_all();  // with the lock: whoever waits may destroy the recorder after that
    }
    if (!action) return;
    action();
    const std::lock_guard<std::mutex> lock(mMutex);
    mDone = true;
    mChanged.notify_all();
  }

  // In the order in which they came.
  List all() {
    const std::lock_guard<std::mutex> lock(mMutex);
    return mEntries;
  }
  size_t count(const Which& which = {}) {
    const std::lock_guard<std::mutex> lock(mMutex);
    return countLocked(which);
  }
  // All, which are forgotten with that.
  List take() {
    const std::lock_guard<std::mutex> lock(mMutex);
    return std::exchange(mEntries, {});
  }
  // Forgets the entries and the action.
  void clear() {
    const std::lock_guard<std::mutex> lock(mMutex);
    mEntries.clear();
    mAction = nullptr;
  }

  bool waitForCount(size_t times, std::chrono::milliseconds patience = kPatience) {
    return waitFor({}, times, patience);
  }
  bool waitFor(const Which& which, size_t times = 1,
               std::chrono::milliseconds patience = kPatience) {
    std::unique_lock<std::mutex> lock(mMutex);
    return mChanged.wait_for(lock, patience, [&] { return countLocked(which) >= times; });
  }
  // For so many more than there are.
  bool waitForMore(const Which& which, size_t more,
                   std::chrono::milliseconds patience = kPatience) {
    return waitFor(which, count(which) + more, patience);
  }
  // Waits for at least so many and returns all there are.
  List waitForAll(size_t times, std::chrono::milliseconds patience = kPatience) {
    waitForCount(times, patience);
    return all();
  }

  // Runs @p action inside the next one of these.
  void inNext(Which which, std::function<void()> action) {
    const std::lock_guard<std::mutex> lock(mMutex);
    mActionFor = std::move(which);
    mAction = std::move(action);
    mDone = false;
  }
  // Waits for the action's end.
  bool waitDone(std::chrono::milliseconds patience = kPatience) {
    std::unique_lock<std::mutex> lock(mMutex);
    return mChanged.wait_for(lock, patience, [this] { return mDone; });
  }

 private:
  size_t countLocked(const Which& which) const {
    size_t count = 0;
    for (const auto& entry : mEntries) {
      if constexpr (kKeep == Keep::InOrder) {
        count += !which || which(entry) ? 1 : 0;
      } else {
        count += !which || which(entry.first) ? entry.second : 0;
      }
    }
    return count;
  }

  std::mutex mMutex;
  std::condition_variable mChanged;
  std::conditional_t<kKeep == Keep::InOrder, List, std::map<Entry, size_t>> mEntries;
  Which mActionFor;
  std::function<void()> mAction;
  bool mDone = false;
};
