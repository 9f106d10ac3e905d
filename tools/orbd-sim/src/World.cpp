// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

#include "orbsim/World.h"

#include <algorithm>
#include <utility>

namespace orbsim {
namespace {

// In ticks: a thread that is later than this continues with the current tick.
constexpr uint64_t kFarBehind = World::kRemembered / 2;

}  // namespace

World::World(uint64_t seed, const ModelSettings& settings, Milliseconds interval)
    : mSettings(settings),
      mDevice(seed, settings),
      mMissing(settings.beginWith),
      mIntervalMs(interval.count()) {}

void World::wanted(uint32_t sdkType) {
  {
    const std::lock_guard<std::mutex> lock(mLock);
    if (mBegun) return;
    mMissing.erase(sdkType);
    const bool first = mSettings.begin == Begin::kFirstUse;
    if (!first && (mSettings.begin != Begin::kReporting || !mMissing.empty())) return;
    begin();
  }
  tellBegun();
}

void World::beginIf(Begin event) {
  {
    const std::lock_guard<std::mutex> lock(mLock);
    if (mBegun || mSettings.begin != event) return;
    begin();
  }
  tellBegun();
}

void World::begin() {
  mBegun = true;
  mEpoch = Clock::now();
  mDevice.setStep(mIntervalMs);
  // There is already a tick if an earlier request needed one.
  if (mTicks.empty() && mIntervalMs > 0) makeTick(0);
}

// The start time does not change any more.
void World::tellBegun() {
  changed();
  if (mOnBegun) mOnBegun(mEpoch);
}

bool World::begun() const {
  const std::lock_guard<std::mutex> lock(mLock);
  return mBegun;
}

std::optional<Milliseconds> World::now() const {
  const std::lock_guard<std::mutex> lock(mLock);
  if (!mBegun) return std::nullopt;
  return Milliseconds(nowMs(Clock::now()));
}

void World::setInterval(Milliseconds interval) {
  {
    const std::lock_guard<std::mutex> lock(mLock);
    if (mBegun) {
      const auto at = Clock::now();
      advance(at);
      if (mTicks.empty()) makeTick(nowMs(at));
      mBaseTick = mFirstTick + mTicks.size() - 1;
      mBaseMs = nowMs(at);
      mDevice.setStep(interval.count());
    }
    mIntervalMs = interval.count();
  }
  changed();
}

void World::setPaused(bool on) {
  {
    const std::lock_guard<std::mutex> lock(mLock);
    if (mPaused && !on && mBegun) {
      advance(Clock::now());
      mSilentTicks = mFirstTick + mTicks.size();
      mSilentPhases = mDevice.phasesEnd();
    }
    mPaused = on;
  }
  changed();
}

bool World::paused() const {
  const std::lock_guard<std::mutex> lock(mLock);
  return mPaused;
}

uint64_t World::tick(Clock::time_point at) const {
  const std::lock_guard<std::mutex> lock(mLock);
  return mBegun ? tickLocked(at) : 0;
}

std::optional<Clock::time_point> World::tickDue(uint64_t& number) const {
  const std::lock_guard<std::mutex> lock(mLock);
  if (!mBegun || mPaused || mIntervalMs <= 0) return std::nullopt;
  number = std::max(number, mSilentTicks);
  const uint64_t current = tickLocked(Clock::now());
  if (current > number + kFarBehind) number = current;
  return wallOf(tickTime(number));
}

Estimate World::estimate(uint64_t number) {
  const std::lock_guard<std::mutex> lock(mLock);
  if (mBegun) advance(Clock::now());
  if (mTicks.empty()) makeTick(0);
  const uint64_t last = mFirstTick + mTicks.size() - 1;
  const uint64_t told = std::clamp(number, mFirstTick, last);
  return mTicks[static_cast<size_t>(told - mFirstTick)];
}

Estimate World::present() {
  const std::lock_guard<std::mutex> lock(mLock);
  if (!mBegun) {
    if (mTicks.empty()) makeTick(0);
    return mTicks.back();
  }
  const auto at = Clock::now();
  advance(at);
  if (mIntervalMs <= 0) makeTick(nowMs(at));
  return mTicks.back();
}

uint64_t World::nextHandoff() {
  const std::lock_guard<std::mutex> lock(mLock);
  if (mBegun) advance(Clock::now());
  const uint64_t end = mDevice.phasesEnd();
  if (end == 0) return 0;
  // An entry is still the next phase if it has just happened and no other phase followed.
  uint64_t last = end - 1;
  const HandoffPhase* const phase = mDevice.phaseFrom(last);
  const bool entry = phase != nullptr &&
                     phase->indication.handoff_info() == LliProto::PRE_HANDOFF &&
                     phase->indication.pre_handoff_state() == LliProto::ENTRY;
  return entry ? last : end;
}

std::optional<Clock::time_point> World::phaseDue(uint64_t number) {
  const std::lock_guard<std::mutex> lock(mLock);
  if (!mBegun || mPaused) return std::nullopt;
  advance(Clock::now());
  number = std::max(number, mSilentPhases);
  if (const HandoffPhase* const phase = mDevice.phaseFrom(number)) return wallOf(phase->at);
  const auto next = mDevice.nextEvent();
  if (!next) return std::nullopt;
  return wallOf(*next);
}

std::optional<HandoffPhase> World::phase(uint64_t& number) {
  const std::lock_guard<std::mutex> lock(mLock);
  if (mBegun) advance(Clock::now());
  number = std::max(number, mSilentPhases);
  const HandoffPhase* const phase = mDevice.phaseFrom(number);
  if (phase == nullptr) return std::nullopt;
  return *phase;
}

std::string World::orderHandoff(const HandoffOrder& order) {
  {
    const std::lock_guard<std::mutex> lock(mLock);
    settle();
    if (mDevice.technology().word == order.target) return order.alreadyThere();
    mDevice.orderHandoff(orderTime({}), order);
  }
  changed();
  return {};
}

uint64_t World::orderHandoff(const HandoffOrder& order, Milliseconds at) {
  uint64_t number = 0;
  {
    const std::lock_guard<std::mutex> lock(mLock);
    number = mDevice.orderHandoff(at.count(), order);
  }
  changed();
  return number;
}

bool World::isPointless(uint64_t handoff) {
  const std::lock_guard<std::mutex> lock(mLock);
  settle();
  return mDevice.isPointless(handoff);
}

void World::orderRate(const std::optional<Ramp>& ramp, std::optional<Milliseconds> at) {
  const std::lock_guard<std::mutex> lock(mLock);
  mDevice.orderRate(orderTime(at), ramp);
}

void World::orderLatency(const std::optional<Ramp>& ramp, std::optional<Milliseconds> at) {
  const std::lock_guard<std::mutex> lock(mLock);
  mDevice.orderLatency(orderTime(at), ramp);
}

void World::orderTechnology(const std::string& word, std::optional<Milliseconds> at) {
  {
    const std::lock_guard<std::mutex> lock(mLock);
    mDevice.orderTechnology(orderTime(at), word);
  }
  changed();
}

World::View World::view() {
  const std::lock_guard<std::mutex> lock(mLock);
  settle();
  if (mTicks.empty()) makeTick(0);
  return {mDevice.technology().word, mDevice.inHandoff(), mTicks.back()};
}

int64_t World::nowMs(Clock::time_point at) const {
  if (at < mEpoch) return 0;
  return std::chrono::duration_cast<Milliseconds>(at - mEpoch).count();
}

uint64_t World::tickLocked(Clock::time_point at) const {
  if (mIntervalMs <= 0) return mFirstTick + (mTicks.empty() ? 0 : mTicks.size() - 1);
  const int64_t since = std::max<int64_t>(nowMs(at) - mBaseMs, 0);
  return mBaseTick + static_cast<uint64_t>(since / mIntervalMs);
}

int64_t World::tickTime(uint64_t number) const {
  if (number <= mBaseTick) return mBaseMs;
  return mBaseMs + static_cast<int64_t>(number - mBaseTick) * mIntervalMs;
}

// Processes everything up to now, ticks and events in the order of time.
void World::advance(Clock::time_point at) {
  const uint64_t current = tickLocked(at);
  while (mIntervalMs > 0 && mFirstTick + mTicks.size() <= current)
    makeTick(tickTime(mFirstTick + mTicks.size()));
  mDevice.moveTo(nowMs(at));
}

// Processes orders for now. Before the time has begun, this is its first moment. Otherwise a tick
// that was calculated since then would hide an order that came after it.
void World::settle() {
  if (mBegun) {
    advance(Clock::now());
  } else {
    mDevice.moveTo(0);
  }
}

void World::makeTick(int64_t at) {
  mTicks.push_back(mDevice.step(at));
  while (mTicks.size() > kRemembered) {
    mTicks.pop_front();
    ++mFirstTick;
  }
}

int64_t World::orderTime(const std::optional<Milliseconds>& at) {
  if (at) return at->count();
  if (!mBegun) return 0;
  const auto now = Clock::now();
  advance(now);
  return nowMs(now);
}

}  // namespace orbsim
