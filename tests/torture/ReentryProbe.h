// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <pthread.h>
#include <unistd.h>

#include <condition_variable>
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <utility>

#include "Functions.h"

namespace torture {

// Callbacks by kind; those of a status are followed by those of the other services.
enum Slot {
  kStatus,
  kStatusV2 = kStatus + int{kServices},
  kLceCriteria = kStatusV2 + int{kServices},
  kLceLast,
  kLceReport,
  kLleLast,
  kLleReport,
  kLliInterrupt
};
inline Slot slotOf(Slot first, Service service) {
  return static_cast<Slot>(int{first} + int{service});
}

// Stands behind all callbacks and runs, once, an action inside the one that it is armed for. Never
// destroyed: callbacks may come while the process exits. mMutex guards all; it is free while the
// action runs.
class Probe {
 public:
  static constexpr int kAnyValue = -1000;

  static Probe& get() {
    static Probe* const probe = new Probe;
    return *probe;
  }
  void called(Slot slot, int value) {
    std::function<void()> action;
    {
      const std::lock_guard<std::mutex> lock(mMutex);
      ++mCalls[{slot, value}];
      const bool wanted = slot == mSlot && (mValue == kAnyValue || mValue == value);
      if (wanted) action.swap(mAction);
    }
    mChanged.notify_all();
    if (!action) return;
    const std::string thread = threadName();
    action();
    const std::lock_guard<std::mutex> lock(mMutex);
    mThread = thread;
    mDone = true;
    mChanged.notify_all();
  }
  void arm(Slot slot, int value, std::function<void()> action) {
    const std::lock_guard<std::mutex> lock(mMutex);
    mSlot = slot;
    mValue = value;
    mAction = std::move(action);
    mDone = false;
    mCalls.clear();
  }
  // Waits, for as long as the watchdog lets it, for the action's end and returns the thread it ran
  // on.
  std::string waitDone() {
    std::unique_lock<std::mutex> lock(mMutex);
    mChanged.wait(lock, [this] { return mDone; });
    return mThread;
  }
  // Waits for so many callbacks with this value since arm().
  void waitFor(Slot slot, int value, size_t times = 1) {
    std::unique_lock<std::mutex> lock(mMutex);
    mChanged.wait(lock, [&] { return mCalls[{slot, value}] >= times; });
  }
  // The kernel names the main thread after the program, which is all the same here.
  static std::string threadName() {
    if (getpid() == gettid()) return "caller";
    char name[16] = "";
    pthread_getname_np(pthread_self(), name, sizeof(name));
    return name;
  }

 private:
  std::mutex mMutex;
  std::condition_variable mChanged;
  Slot mSlot = kStatus;
  int mValue = kAnyValue;
  std::function<void()> mAction;
  std::string mThread;
  bool mDone = false;
  std::map<std::pair<Slot, int>, size_t> mCalls;
};

template <Slot kSlot>
void onStatusOf(status_e status) {
  Probe::get().called(kSlot, status);
}
template <Slot kSlot>
void onStatusV2Of(status_v2_e status) {
  Probe::get().called(kSlot, status);
}
template <Slot kSlot>
void onLceReport(LceEstimationReportStatus status, LceEstimationReport) {
  Probe::get().called(kSlot, status);
}
template <Slot kSlot>
void onLleReport(int32_t result, const LleEstimationReport*) {
  Probe::get().called(kSlot, result);
}

// The probe's callbacks.
inline const Callbacks& probing() {
  static const Callbacks callbacks{
      onStatusOf<static_cast<Slot>(int{kStatus} + int{kLce})>,
      onStatusV2Of<static_cast<Slot>(int{kStatusV2} + int{kLce})>,
      [](LceReportingCriteriaStatus status) { Probe::get().called(kLceCriteria, status); },
      onLceReport<kLceLast>,
      onLceReport<kLceReport>,
      onStatusOf<static_cast<Slot>(int{kStatus} + int{kLle})>,
      onStatusV2Of<static_cast<Slot>(int{kStatusV2} + int{kLle})>,
      onLleReport<kLleLast>,
      onLleReport<kLleReport>,
      onStatusOf<static_cast<Slot>(int{kStatus} + int{kLli})>,
      onStatusV2Of<static_cast<Slot>(int{kStatusV2} + int{kLli})>,
      [](LliHandoffIndType type, LliPreHandoffState, const LliInterruptInfo*) {
        Probe::get().called(kLliInterrupt, type);
      }};
  return callbacks;
}

}  // namespace torture
