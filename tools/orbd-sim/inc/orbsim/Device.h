// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>

#include "orbsim/HandoffModel.h"
#include "orbsim/LatencyModel.h"
#include "orbsim/LinkModel.h"
#include "orbsim/Model.h"
#include "orbsim/Radio.h"

namespace orbsim {

// What the services tell of one moment.
struct Estimate {
  int64_t at = 0;  // milliseconds of the model's time
  LinkEstimate link;
  LatencyEstimate latency;
};

// The moving device that all services tell of: one radio, and the models of capacity, latency and
// handoffs as views of it. Before a handoff the signal fades; from the start of one to its outcome
// the rate is 0 and latencies grow; after a success everything is about the new technology. What
// happens depends on the seed, the settings, the orders and the model's time, and on nothing else.
// Times are milliseconds of the model's time and never go back. Owned by World and used with its
// lock held; tests use one of their own.
class Device {
 public:
  Device(uint64_t seed, const ModelSettings& settings);

  // The time between two estimates, which paces handoffs, too; 0 for none of its own accord.
  void setStep(int64_t stepMs);

  // Lets everything happen up to that time.
  void moveTo(int64_t now);
  // One step of the way, at that time.
  Estimate step(int64_t now);

  // What is to happen at a time to come; at once when that is over. A handoff to where the device
  // is then changes nothing; its order is told apart by the number that comes back.
  uint64_t orderHandoff(int64_t at, const HandoffOrder& order);
  void orderRate(int64_t at, const std::optional<Ramp>& ramp);  // without: wander again
  void orderLatency(int64_t at, const std::optional<Ramp>& ramp);
  void orderTechnology(int64_t at, const std::string& word);

  // Whether nothing has come of that order, as the device was there.
  bool isPointless(uint64_t order) const { return mPointless.count(order) != 0; }

  bool inHandoff() const { return mPhase != Phase::kNone; }
  const Technology& technology() const { return mRadio.technology(); }
  const Estimate& last() const { return mLast; }
  // Phases that have happened, by number from the first one on; the oldest are forgotten.
  uint64_t phasesEnd() const { return mForgotten + mPhases.size(); }
  // The first one from `number` on, whose number it then is.
  const HandoffPhase* phaseFrom(uint64_t& number) const;
  // When something happens next that is not a step.
  std::optional<int64_t> nextEvent() const;

 private:
  enum class Phase { kNone, kComing, kInterrupted, kOver };
  // A value that is held from `start` on.
  struct Held {
    int64_t start;
    int64_t over;
    int64_t from;
    int64_t to;

    int64_t at(int64_t now) const;
  };

  static std::optional<Held> hold(const std::optional<Ramp>& ramp, int64_t now, int64_t value);
  void at(int64_t time, std::function<void()> action);
  void begin(const HandoffOrder& order, uint64_t number);
  void abandon();
  void happen(const HandoffPhase& phase);
  void remember(const HandoffPhase& phase);
  void planNext();

  const bool mByItself;
  Radio mRadio;
  LinkModel mLink;
  LatencyModel mLatency;
  HandoffModel mHandoffs;
  int64_t mNow = 0;
  int64_t mStepMs = 0;
  std::multimap<int64_t, std::function<void()>> mOrders;
  uint64_t mHandoffOrders = 0;       // that there were
  std::set<uint64_t> mPointless;     // of these
  std::deque<HandoffPhase> mPlan;    // to come
  std::deque<HandoffPhase> mPhases;  // that happened
  uint64_t mForgotten = 0;
  Phase mPhase = Phase::kNone;
  int64_t mInterruptedAt = 0;
  std::optional<Held> mRate;
  std::optional<Held> mLatencyHeld;
  Estimate mLast;
};

}  // namespace orbsim
