// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

#pragma once

#include <chrono>
#include <cstdint>
#include <deque>
#include <functional>
#include <mutex>
#include <optional>
#include <set>
#include <string>

#include "orbsim/Device.h"
#include "orbsim/Model.h"

namespace orbsim {

using Clock = std::chrono::steady_clock;

// The device and its time, which all services of all sessions share, so that reports of the same
// moment have the same values. The model's time begins as the settings say and then runs with the
// clock. Estimates are made at ticks at a fixed interval. The model's time decides which tick is
// reported, even if the reporting thread runs late. Owned by Control, used by any thread. `mLock`
// guards everything; it is not held while the hook for changes is called.
class World {
 public:
  // How long ticks are kept.
  static constexpr uint64_t kRemembered = 256;

  World(uint64_t seed, const ModelSettings& settings, Milliseconds interval);

  // Set before any thread starts. Called when an unexpected event is due earlier.
  void setChanged(std::function<void()> changed) { mChanged = std::move(changed); }

  // Set before any thread starts. Called when the model's time begins.
  void setBegun(std::function<void(Clock::time_point)> begun) { mOnBegun = std::move(begun); }

  // Events that can begin the model's time, see Begin.
  void listening() { beginIf(Begin::kListening); }
  void connected() { beginIf(Begin::kConnected); }
  void wanted(uint32_t sdkType);
  bool begun() const;
  // The model's time; empty before it begins.
  std::optional<Milliseconds> now() const;

  // 0: ticks only on request.
  void setInterval(Milliseconds interval);
  // While paused, nothing is due. The device continues to move, and missed events are not reported.
  void setPaused(bool on);
  bool paused() const;

  // Ticks. The number of the current tick; 0 before the time begins.
  uint64_t tick(Clock::time_point at) const;
  // When that tick, or the first reported tick after it, is due; empty if none is.
  std::optional<Clock::time_point> tickDue(uint64_t& number) const;
  // The estimate of a due tick, or of the oldest tick that is kept.
  Estimate estimate(uint64_t number);
  // The estimate of the current tick, or of a new tick if there are no automatic ticks.
  Estimate present();

  // Phases of handoffs, by number. The first number for a new client: that of an entry.
  uint64_t nextHandoff();
  std::optional<Clock::time_point> phaseDue(uint64_t number);
  // The first phase from `number` on that has happened; sets `number` to its number.
  std::optional<HandoffPhase> phase(uint64_t& number);

  // Orders, for a time of the model or for now. A handoff for now: empty, or the reason why it is
  // impossible. A handoff for a time: its number, for the same question after that time.
  std::string orderHandoff(const HandoffOrder& order);
  uint64_t orderHandoff(const HandoffOrder& order, Milliseconds at);
  bool isPointless(uint64_t handoff);
  void orderRate(const std::optional<Ramp>& ramp, std::optional<Milliseconds> at = {});
  void orderLatency(const std::optional<Ramp>& ramp, std::optional<Milliseconds> at = {});
  void orderTechnology(const std::string& word, std::optional<Milliseconds> at = {});

  // The current state for people.
  struct View {
    std::string rat;
    bool handoff = false;
    Estimate estimate;
  };
  View view();

 private:
  void beginIf(Begin event);
  void begin();
  int64_t nowMs(Clock::time_point at) const;
  Clock::time_point wallOf(int64_t ms) const { return mEpoch + Milliseconds(ms); }
  uint64_t tickLocked(Clock::time_point at) const;
  int64_t tickTime(uint64_t number) const;
  void advance(Clock::time_point at);
  void settle();
  void makeTick(int64_t at);
  int64_t orderTime(const std::optional<Milliseconds>& at);
  void changed() const {
    if (mChanged) mChanged();
  }
  void tellBegun();

  const ModelSettings mSettings;
  std::function<void()> mChanged;
  std::function<void(Clock::time_point)> mOnBegun;

  mutable std::mutex mLock;
  Device mDevice;
  bool mBegun = false;
  bool mPaused = false;
  std::set<uint32_t> mMissing;  // services whose reports are not requested yet
  Clock::time_point mEpoch;
  int64_t mIntervalMs;
  // Ticks are counted from here.
  uint64_t mBaseTick = 0;
  int64_t mBaseMs = 0;
  uint64_t mFirstTick = 0;      // that is kept
  std::deque<Estimate> mTicks;  // from mFirstTick on
  uint64_t mSilentTicks = 0;    // ticks before this one were never reported
  uint64_t mSilentPhases = 0;
};

}  // namespace orbsim
