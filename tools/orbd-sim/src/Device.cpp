// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

#include "orbsim/Device.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace orbsim {
namespace {

// The number of kept phases, for sessions that read them late.
constexpr size_t kRemembered = 512;

// Each part has its own random numbers, so that no part depends on how many another part uses.
enum Dice : uint64_t { kRadio, kLink, kLatency, kHandoffs };
uint64_t diceOf(uint64_t seed, Dice part) { return seed + part * 0xD1B54A32D192ED03u; }

const Technology& firstTechnology(const ModelSettings& settings) {
  const Technology* const named = technologyNamed(settings.rat);
  return named != nullptr ? *named : technologyOf(LliProto::LLI_3GPP_LTE);
}

}  // namespace

Device::Device(uint64_t seed, const ModelSettings& settings)
    : mByItself(settings.handoffs),
      mRadio(diceOf(seed, kRadio), firstTechnology(settings)),
      mLink(diceOf(seed, kLink)),
      mLatency(diceOf(seed, kLatency)),
      mHandoffs(diceOf(seed, kHandoffs)) {
  if (settings.rate) mRate = hold(Ramp{{}, *settings.rate, {}}, 0, 0);
  if (settings.latency) mLatencyHeld = hold(Ramp{{}, *settings.latency, {}}, 0, 0);
}

void Device::setStep(int64_t stepMs) {
  const bool paced = mStepMs > 0;
  mStepMs = stepMs;
  if (!paced && stepMs > 0 && mByItself && mPlan.empty()) {
    const auto phases = mHandoffs.plan(mNow, mStepMs, technology().rat);
    mPlan.assign(phases.begin(), phases.end());
  }
}

void Device::moveTo(int64_t now) {
  for (auto next = nextEvent(); next && *next <= now; next = nextEvent()) {
    mNow = std::max(mNow, *next);
    // At the same time, planned phases happen before orders.
    if (!mPlan.empty() && mPlan.front().at <= *next) {
      const HandoffPhase phase = mPlan.front();
      mPlan.pop_front();
      happen(phase);
      continue;
    }
    const std::function<void()> action = std::move(mOrders.begin()->second);
    mOrders.erase(mOrders.begin());
    action();
  }
  mNow = std::max(mNow, now);
}

Estimate Device::step(int64_t now) {
  moveTo(now);
  mRadio.step();
  const bool interrupted = mPhase == Phase::kInterrupted;
  const auto held = [this](const std::optional<Held>& value) -> std::optional<int64_t> {
    if (!value) return std::nullopt;
    return value->at(mNow);
  };
  mLast.at = mNow;
  const bool nothing = interrupted || technology().rat == LliProto::NULL_BEARER;
  mLast.link = mLink.next(mRadio, nothing, held(mRate));
  const uint64_t waited = interrupted ? static_cast<uint64_t>(mNow - mInterruptedAt) * 1000 : 0;
  std::optional<uint64_t> latency;
  if (mLatencyHeld) latency = static_cast<uint64_t>(mLatencyHeld->at(mNow));
  mLast.latency = mLatency.next(mRadio, waited, latency);
  return mLast;
}

int64_t Device::Held::at(int64_t now) const {
  if (now >= start + over) return to;
  if (now <= start) return from;
  return from + (to - from) * (now - start) / over;
}

std::optional<Device::Held> Device::hold(const std::optional<Ramp>& ramp, int64_t now,
                                         int64_t value) {
  if (!ramp) return std::nullopt;
  const int64_t from = ramp->from ? static_cast<int64_t>(*ramp->from) : value;
  return Held{now, ramp->over.count(), from, static_cast<int64_t>(ramp->to)};
}

uint64_t Device::orderHandoff(int64_t time, const HandoffOrder& order) {
  const uint64_t number = ++mHandoffOrders;
  at(time, [this, order, number] { begin(order, number); });
  return number;
}

void Device::orderRate(int64_t time, const std::optional<Ramp>& ramp) {
  at(time, [this, ramp] {
    const int64_t now = mRate ? mRate->at(mNow) : static_cast<int64_t>(mLast.link.rate);
    mRate = hold(ramp, mNow, now);
  });
}

void Device::orderLatency(int64_t time, const std::optional<Ramp>& ramp) {
  at(time, [this, ramp] {
    const int64_t now =
        mLatencyHeld ? mLatencyHeld->at(mNow) : static_cast<int64_t>(mLast.latency.dlLatency);
    mLatencyHeld = hold(ramp, mNow, now);
  });
}

void Device::orderTechnology(int64_t time, const std::string& word) {
  at(time, [this, word] {
    const Technology* const named = technologyNamed(word);
    if (named == nullptr || named == &technology()) return;
    abandon();
    mRadio.enterCell(*named);
    planNext();
  });
}

const HandoffPhase* Device::phaseFrom(uint64_t& number) const {
  number = std::max(number, mForgotten);
  if (number >= phasesEnd()) return nullptr;
  return &mPhases[static_cast<size_t>(number - mForgotten)];
}

std::optional<int64_t> Device::nextEvent() const {
  std::optional<int64_t> next;
  if (!mPlan.empty()) next = mPlan.front().at;
  if (!mOrders.empty())
    next = std::min(next.value_or(mOrders.begin()->first), mOrders.begin()->first);
  return next;
}

void Device::at(int64_t time, std::function<void()> action) {
  mOrders.emplace(std::max(time, mNow), std::move(action));
}

void Device::begin(const HandoffOrder& order, uint64_t number) {
  if (technology().word == order.target) {
    mPointless.insert(number);
    return;
  }
  abandon();
  const auto phases = HandoffModel::ordered(mNow, mStepMs, technology().rat, order);
  mPlan.assign(phases.begin(), phases.end());
}

// Ends the current handoff and reports the end to clients.
void Device::abandon() {
  HandoffPhase end = mPlan.empty() ? HandoffPhase{} : mPlan.back();
  mPlan.clear();
  if (mPhase == Phase::kNone) return;
  end.at = mNow;
  if (mPhase == Phase::kInterrupted) {
    HandoffPhase failure = end;
    failure.indication.set_handoff_info(LliProto::HANDOFF_FAILURE);
    failure.indication.set_pre_handoff_state(LliProto::ENTRY);
    happen(failure);
  }
  mPhase = Phase::kNone;
  mRadio.setLeaving(false);
  remember(end);
}

void Device::happen(const HandoffPhase& phase) {
  const LliProto::LliIndResp& indication = phase.indication;
  switch (indication.handoff_info()) {
    case LliProto::HANDOFF_START:
      mPhase = Phase::kInterrupted;
      mInterruptedAt = phase.at;
      break;
    case LliProto::HANDOFF_SUCCESS:
      mRadio.enterCell(technologyOf(indication.target_rat()));
      mPhase = Phase::kOver;
      break;
    case LliProto::HANDOFF_FAILURE:
      mRadio.setLeaving(false);
      mPhase = Phase::kOver;
      break;
    default:
      mPhase = indication.pre_handoff_state() == LliProto::EXIT ? Phase::kNone : Phase::kComing;
      mRadio.setLeaving(mPhase == Phase::kComing);
      break;
  }
  remember(phase);
  if (mPhase == Phase::kNone && mPlan.empty()) planNext();
}

void Device::remember(const HandoffPhase& phase) {
  mPhases.push_back(phase);
  while (mPhases.size() > kRemembered) {
    mPhases.pop_front();
    ++mForgotten;
  }
}

void Device::planNext() {
  if (!mByItself || mStepMs <= 0) return;
  const int64_t entry = mNow + static_cast<int64_t>(mHandoffs.pause()) * mStepMs;
  const auto phases = mHandoffs.plan(entry, mStepMs, technology().rat);
  mPlan.assign(phases.begin(), phases.end());
}

}  // namespace orbsim
