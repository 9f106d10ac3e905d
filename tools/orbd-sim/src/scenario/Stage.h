// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <future>
#include <map>
#include <string>
#include <thread>

#include "Action.h"
#include "Mutex.h"
#include "orbsim/Daemon.h"
#include "orbsim/World.h"

namespace orbsim {

// Performs actions on a daemon, at once or at a time, on a separate thread: one after the other, in
// the order in which they were given or are due, and without a lock. perform() and the functions
// that end a fault or a pause wait for that thread, unless they are called on it. They and at() may
// be called from any thread, except from the daemon's hooks, which may only call at(). The owner
// calls stop() before the daemon stops. `mLock` guards the pending actions.
class Stage {
 public:
  explicit Stage(Daemon& daemon);
  ~Stage() { stop(); }
  Stage(const Stage&) = delete;
  Stage& operator=(const Stage&) = delete;

  // Performs the action; the log has a line that begins with `words`. Empty, or the reason why it
  // is impossible now.
  std::string perform(const Action& action, const std::string& words);
  void at(Clock::time_point time, std::function<void()> what);
  // Logs the reason why an action could not be done.
  void logNotDone(const std::string& reason);
  // A function that ends the current fault or pause, but not a later one.
  std::function<void()> faultsEnd();
  std::function<void()> pausesEnd();
  // Performs no more actions. Waits for the current action.
  void stop();

  // Errors of actions of at(), which have no caller to report to.
  std::string error() const;

 private:
  std::string act(const HandoffOrder& order);
  std::string act(const RateAction& action);
  std::string act(const LatencyAction& action);
  std::string act(const TechnologyAction& action);
  std::string act(const VanishAction& action);
  std::string act(const DelayAction& action);
  std::string act(const Refusal& refusal);
  std::string act(const FaultAction& action);
  std::string act(const PauseAction& action);
  std::string act(const SendAction& action);
  std::string act(const DropAction& action);
  std::string act(const StatusAction&) { return {}; }
  std::string actAndLog(const Action& action, const std::string& words);
  bool carryOut(std::function<void()> what);
  std::function<void()> faultsEnd(uint64_t number);
  std::function<void()> pausesEnd(uint64_t number);
  void endFault();
  void reappear();
  void loop();

  struct Order {
    std::function<void()> what;
    std::promise<bool> done;  // false: not done any more
  };

  Daemon& mDaemon;
  // Only for the stage's thread.
  bool mGone = false;
  bool mFaultRefuses = false;
  uint64_t mFaults = 0;  // number of faults so far, which is the number of the current one
  uint64_t mPauses = 0;  // the same for pauses

  mutable Mutex mLock;
  Condition mChanged;
  std::deque<Order> mOrders ORB_GUARDED_BY(mLock);
  std::multimap<Clock::time_point, std::function<void()>> mToCome ORB_GUARDED_BY(mLock);
  std::string mError ORB_GUARDED_BY(mLock);
  std::thread::id mWorker ORB_GUARDED_BY(mLock);
  bool mStopping ORB_GUARDED_BY(mLock) = false;
  std::thread mThread;  // only for the owner's thread
};

}  // namespace orbsim
