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

// The device and its time, which all services of all sessions share: whoever reports at the same
// moment tells the same. The model's time begins as the settings say and then goes with the clock.
// Estimates are made at ticks, an interval apart; which tick is told is a matter of the model's
// time, however late the thread that tells it runs. Owned by Control, used by any thread. `mLock`
// guards everything; the hook for changes is called without it.
class World {
 public:
  // How far back ticks are remembered.
  static constexpr uint64_t kRemembered = 256;

  World(uint64_t seed, const ModelSettings& settings, Milliseconds interval);

  // Before any thread: called when something that was not foreseen is due earlier.
  void setChanged(std::function<void()> changed) { mChanged = std::move(changed); }

  // Before any thread: called once the model's time has begun.
  void setBegun(std::function<void(Clock::time_point)> begun) { mOnBegun = std::move(begun); }

  // What may begin the model's time, see Begin.
  void listening() { beginIf(Begin::kListening); }
  void connected() { beginIf(Begin::kConnected); }
  void wanted(uint32_t sdkType);
  bool begun() const;
  // The model's time; nothing before it has begun.
  std::optional<Milliseconds> now() const;

  // 0: no ticks but those that somebody asks for.
  void setInterval(Milliseconds interval);
  // While paused nothing is due; the device moves on, and what happened meanwhile is not told.
  void setPaused(bool on);
  bool paused() const;

  // Ticks. The number of the present one; 0 before the time has begun.
  uint64_t tick(Clock::time_point at) const;
  // When that one, or the first one after it that is told, is due; nothing while none is.
  std::optional<Clock::time_point> tickDue(uint64_t& number) const;
  // Of a tick that is due, or of the oldest one that is remembered.
  Estimate estimate(uint64_t number);
  // Of the present tick, or of a new one where none comes by itself.
  Estimate present();

  // Phases of handoffs, by number. The number from which a newcomer hears them: that of an entry.
  uint64_t nextHandoff();
  std::optional<Clock::time_point> phaseDue(uint64_t number);
  // The first phase from `number` on that has happened, which `number` then is.
  std::optional<HandoffPhase> phase(uint64_t& number);

  // Orders, for a time of the model or for now. A handoff for now: empty, or why it cannot be. One
  // for a time: its number, with which the same can be asked once that time has come.
  std::string orderHandoff(const HandoffOrder& order);
  uint64_t orderHandoff(const HandoffOrder& order, Milliseconds at);
  bool isPointless(uint64_t handoff);
  void orderRate(const std::optional<Ramp>& ramp, std::optional<Milliseconds> at = {});
  void orderLatency(const std::optional<Ramp>& ramp, std::optional<Milliseconds> at = {});
  void orderTechnology(const std::string& word, std::optional<Milliseconds> at = {});

  // How things are, for people.
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
  std::set<uint32_t> mMissing;  // services that are not wanted yet
  Clock::time_point mEpoch;
  int64_t mIntervalMs;
  // Ticks are counted from this one on.
  uint64_t mBaseTick = 0;
  int64_t mBaseMs = 0;
  uint64_t mFirstTick = 0;      // that is remembered
  std::deque<Estimate> mTicks;  // from that one on
  uint64_t mSilentTicks = 0;    // what is before these was never told
  uint64_t mSilentPhases = 0;
};

}  // namespace orbsim
