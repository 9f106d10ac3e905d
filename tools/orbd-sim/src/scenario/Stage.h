// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

#pragma once

#include <condition_variable>
#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <thread>

#include "Action.h"
#include "orbsim/Daemon.h"
#include "orbsim/World.h"

namespace orbsim {

// Where actions are carried out on a daemon, at once or at a time: a thread waits for the times.
// perform() and at() may be called from any thread, stop() by the owner before the daemon stops.
// `mLock` guards what is to come; `mActing` keeps actions one after the other, and hooks of the
// daemon never wait for it.
class Stage {
 public:
  explicit Stage(Daemon& daemon);
  ~Stage() { stop(); }
  Stage(const Stage&) = delete;
  Stage& operator=(const Stage&) = delete;

  // Carries it out; the log has a line with `words` first. Empty, or why it cannot be done now.
  std::string perform(const Action& action, const std::string& words);
  void at(Clock::time_point time, std::function<void()> what);
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
  std::function<void()> faultsEnd(uint64_t number);
  std::function<void()> pausesEnd(uint64_t number);
  void endFault();
  void reappear();
  void loop();

  Daemon& mDaemon;
  std::mutex mActing;
  bool mGone = false;          // with mActing
  bool mFaultRefuses = false;  // with mActing
  uint64_t mFaults = 0;        // that there were: the number of the present one; with mActing
  uint64_t mPauses = 0;        // the same of pauses; with mActing

  mutable std::mutex mLock;
  std::condition_variable mChanged;
  std::multimap<Clock::time_point, std::function<void()>> mToCome;
  std::string mError;
  bool mStopping = false;
  std::thread mThread;  // the owner's thread only
};

}  // namespace orbsim
