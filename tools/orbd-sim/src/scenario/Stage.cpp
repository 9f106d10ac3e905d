// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

#include "Stage.h"

#include <utility>

#include "orbsim/Service.h"

namespace orbsim {

Stage::Stage(Daemon& daemon) : mDaemon(daemon), mThread(&Stage::loop, this) {}

void Stage::stop() {
  if (!mThread.joinable()) return;
  {
    const std::lock_guard<std::mutex> lock(mLock);
    mStopping = true;
    mChanged.notify_all();
  }
  mThread.join();
}

std::string Stage::error() const {
  const std::lock_guard<std::mutex> lock(mLock);
  return mError;
}

void Stage::at(Clock::time_point time, std::function<void()> what) {
  const std::lock_guard<std::mutex> lock(mLock);
  mToCome.emplace(time, std::move(what));
  mChanged.notify_all();
}

void Stage::loop() {
  std::unique_lock<std::mutex> lock(mLock);
  while (!mStopping) {
    if (mToCome.empty()) {
      mChanged.wait(lock);
      continue;
    }
    const auto first = mToCome.begin();
    if (first->first > Clock::now()) {
      mChanged.wait_until(lock, first->first);
      continue;
    }
    const std::function<void()> what = std::move(first->second);
    mToCome.erase(first);
    lock.unlock();
    what();
    lock.lock();
  }
}

std::string Stage::perform(const Action& action, const std::string& words) {
  mDaemon.log(words);
  std::string reason;
  {
    const std::lock_guard<std::mutex> lock(mActing);
    reason = std::visit([this](const auto& what) { return act(what); }, action);
  }
  if (!reason.empty()) mDaemon.log("not done: " + reason);
  return reason;
}

std::string Stage::act(const HandoffOrder& order) {
  if (mDaemon.world().view().handoff) return "a handoff is under way";
  mDaemon.world().orderHandoff(order);
  return {};
}

std::string Stage::act(const RateAction& action) {
  mDaemon.world().orderRate(action.ramp);
  return {};
}

std::string Stage::act(const LatencyAction& action) {
  mDaemon.world().orderLatency(action.ramp);
  return {};
}

std::string Stage::act(const TechnologyAction& action) {
  mDaemon.world().orderTechnology(action.rat);
  return {};
}

std::string Stage::act(const VanishAction& action) {
  if (mGone) return "the daemon is gone already";
  mGone = true;
  mDaemon.vanish();
  at(Clock::now() + action.length, [this] {
    const std::lock_guard<std::mutex> lock(mActing);
    mGone = false;
    if (!mFaultRefuses) reappear();
  });
  return {};
}

void Stage::reappear() {
  if (mDaemon.reappear()) return;
  const std::lock_guard<std::mutex> lock(mLock);
  mError = "the daemon cannot listen again";
}

std::string Stage::act(const DelayAction& action) {
  mDaemon.setAnswerDelay(action.delay);
  return {};
}

std::string Stage::act(const Refusal& refusal) {
  mDaemon.refuse(refusal);
  return {};
}

std::string Stage::act(const FaultAction& action) {
  if (mGone) return "the daemon is gone";
  endFault();
  ++mFaults;
  action.faults.prepare(mDaemon);
  if (mDaemon.running()) action.faults.apply(mDaemon);
  mFaultRefuses = action.words == "refuse";
  if (action.length) at(Clock::now() + *action.length, faultsEnd(mFaults));
  return {};
}

std::function<void()> Stage::faultsEnd(uint64_t number) {
  return [this, number] {
    const std::lock_guard<std::mutex> lock(mActing);
    if (number == mFaults) endFault();
  };
}

// A daemon as it should be, whatever was wrong with it.
void Stage::endFault() {
  mDaemon.setHandshake({});
  mDaemon.setFrameHandler({});
  mDaemon.setAccepting(true);
  mDaemon.setReading(true);
  // Who is gone besides comes back when that is over.
  if (std::exchange(mFaultRefuses, false) && !mGone) reappear();
}

std::string Stage::act(const PauseAction& action) {
  ++mPauses;
  mDaemon.world().setPaused(action.on);
  if (action.length) at(Clock::now() + *action.length, pausesEnd(mPauses));
  return {};
}

std::function<void()> Stage::pausesEnd(uint64_t number) {
  return [this, number] {
    const std::lock_guard<std::mutex> lock(mActing);
    if (number == mPauses) mDaemon.world().setPaused(false);
  };
}

std::function<void()> Stage::faultsEnd() {
  const std::lock_guard<std::mutex> lock(mActing);
  return faultsEnd(mFaults);
}

std::function<void()> Stage::pausesEnd() {
  const std::lock_guard<std::mutex> lock(mActing);
  return pausesEnd(mPauses);
}

std::string Stage::act(const SendAction& action) {
  if (mDaemon.sendToUsers(action.sdkType, action.blob) > 0) return {};
  return std::string("no session uses ") + serviceName(action.sdkType);
}

std::string Stage::act(const DropAction& action) {
  if (!action.sessionId) {
    mDaemon.closeAll();
    return {};
  }
  if (mDaemon.closeSession(*action.sessionId)) return {};
  return "no session " + std::to_string(*action.sessionId);
}

}  // namespace orbsim
