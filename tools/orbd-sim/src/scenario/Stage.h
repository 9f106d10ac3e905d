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

// Where actions are carried out on a daemon, at once or at a time, by a thread of its own: one
// after the other, in the order in which they were given or are due, and with no lock held.
// perform() and the ends of what lasts wait for that thread, unless they are called on it; they and
// at() may be called from any thread but the daemon's hooks, which may use at() alone. stop() is
// for the owner, before the daemon stops. `mLock` guards what is to come.
class Stage {
 public:
  explicit Stage(Daemon& daemon);
  ~Stage() { stop(); }
  Stage(const Stage&) = delete;
  Stage& operator=(const Stage&) = delete;

  // Carries it out; the log has a line with `words` first. Empty, or why it cannot be done now.
  std::string perform(const Action& action, const std::string& words);
  void at(Clock::time_point time, std::function<void()> what);
  // What the log says, below its words, of what cannot be done.
  void logNotDone(const std::string& reason);
  // What ends the present fault or pause, and leaves one alone that has come after it.
  std::function<void()> faultsEnd();
  std::function<void()> pausesEnd();
  // Nothing happens any more. Waits for what is happening.
  void stop();

  // What went wrong with actions of at(), which nobody could be told.
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
    std::promise<bool> done;  // false: not any more
  };

  Daemon& mDaemon;
  // The stage's thread only.
  bool mGone = false;
  bool mFaultRefuses = false;
  uint64_t mFaults = 0;  // that there were: the number of the present one
  uint64_t mPauses = 0;  // the same of pauses

  mutable Mutex mLock;
  Condition mChanged;
  std::deque<Order> mOrders ORB_GUARDED_BY(mLock);
  std::multimap<Clock::time_point, std::function<void()>> mToCome ORB_GUARDED_BY(mLock);
  std::string mError ORB_GUARDED_BY(mLock);
  std::thread::id mWorker ORB_GUARDED_BY(mLock);
  bool mStopping ORB_GUARDED_BY(mLock) = false;
  std::thread mThread;  // the owner's thread only
};

}  // namespace orbsim
