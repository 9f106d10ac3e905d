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

// The values of one moment for all services.
struct Estimate {
  int64_t at = 0;  // milliseconds of the model's time
  LinkEstimate link;
  LatencyEstimate latency;
};

// The moving device that all services report on: one radio, and models of capacity, latency and
// handoffs that depend on it. The signal fades before a handoff. From the start of a handoff to its
// result, the rate is 0 and latencies grow. After a success, all values are those of the new
// technology. Everything depends only on the seed, the settings, the orders and the model's time.
// Times are milliseconds of the model's time and never decrease. Owned by World and used while
// World's lock is held; tests use their own objects.
class Device {
 public:
  Device(uint64_t seed, const ModelSettings& settings);

  // The time between two estimates, which also sets the pace of handoffs; 0: no automatic steps.
  void setStep(int64_t stepMs);

  // Processes all events up to that time.
  void moveTo(int64_t now);
  // Makes one step at that time.
  Estimate step(int64_t now);

  // Orders an event for a future time; it happens at once if the time has passed. A handoff has no
  // effect if the device already has the target technology then; the returned number identifies the
  // order.
  uint64_t orderHandoff(int64_t at, const HandoffOrder& order);
  void orderRate(int64_t at, const std::optional<Ramp>& ramp);  // without: the rate varies again
  void orderLatency(int64_t at, const std::optional<Ramp>& ramp);
  void orderTechnology(int64_t at, const std::string& word);

  // Whether that order had no effect because the device already had the technology.
  bool isPointless(uint64_t order) const { return mPointless.count(order) != 0; }

  bool inHandoff() const { return mPhase != Phase::kNone; }
  const Technology& technology() const { return mRadio.technology(); }
  const Estimate& last() const { return mLast; }
  // Phases that have happened, numbered from the first one; the oldest are forgotten.
  uint64_t phasesEnd() const { return mForgotten + mPhases.size(); }
  // The first phase from `number` on; sets `number` to its number.
  const HandoffPhase* phaseFrom(uint64_t& number) const;
  // The time of the next event that is not a step.
  std::optional<int64_t> nextEvent() const;

 private:
  enum class Phase { kNone, kComing, kInterrupted, kOver };
  // A fixed value from `start` on.
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
  uint64_t mHandoffOrders = 0;       // number of orders
  std::set<uint64_t> mPointless;     // orders without effect
  std::deque<HandoffPhase> mPlan;    // future phases
  std::deque<HandoffPhase> mPhases;  // past phases
  uint64_t mForgotten = 0;
  Phase mPhase = Phase::kNone;
  int64_t mInterruptedAt = 0;
  std::optional<Held> mRate;
  std::optional<Held> mLatencyHeld;
  Estimate mLast;
};

}  // namespace orbsim
