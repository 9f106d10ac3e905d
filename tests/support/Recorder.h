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

// Whether a recorder keeps its entries in order, or only counts equal ones. A long run must not
// keep all entries. Counted entries need an operator<.
enum class Keep { InOrder, Counts };

// Records what callbacks got. Any thread adds entries; the test reads them and waits for them. A
// test can have an action run inside the callback of the next entry of a kind. mMutex guards
// everything and is not held while the action runs.
template <class Entry, Keep kKeep = Keep::InOrder>
class Recorder {
 public:
  using List = std::vector<Entry>;
  using Which = std::function<bool(const Entry&)>;
  static constexpr std::chrono::seconds kPatience{20};
  static constexpr std::chrono::hours kWatched{24};  // a watchdog ends the wait

  // Callbacks of the C API have no context argument, so they use one recorder for the process.
  // Never destroyed, because callbacks may come while the process exits.
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
      mChanged.notify_all();  // with the lock: a waiting thread may destroy the recorder after that
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
  // Returns all entries and removes them.
  List take() {
    const std::lock_guard<std::mutex> lock(mMutex);
    return std::exchange(mEntries, {});
  }
  // Removes the entries and the action.
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
  // Waits for that many more than there are now.
  bool waitForMore(const Which& which, size_t more,
                   std::chrono::milliseconds patience = kPatience) {
    return waitFor(which, count(which) + more, patience);
  }
  // Waits for at least so many and returns all entries.
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
