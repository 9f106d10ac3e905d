// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

#include "Stage.h"

#include <utility>

#include "orbsim/Service.h"

namespace orbsim {
namespace {

// How long to wait if the time of the next action is not known.
constexpr std::chrono::hours kLongTime{24};

}  // namespace

Stage::Stage(Daemon& daemon) : mDaemon(daemon), mThread(&Stage::loop, this) {}

void Stage::stop() {
  if (!mThread.joinable()) return;
  {
    const LockGuard lock(mLock);
    mStopping = true;
    mChanged.notify_all();
  }
  mThread.join();
}

std::string Stage::error() const {
  const LockGuard lock(mLock);
  return mError;
}

void Stage::at(Clock::time_point time, std::function<void()> what) {
  const LockGuard lock(mLock);
  mToCome.emplace(time, std::move(what));
  mChanged.notify_all();
}

// Lets the thread do it after its current action, and waits for that. False if it does nothing any
// more.
bool Stage::carryOut(std::function<void()> what) {
  std::future<bool> done;
  {
    const LockGuard lock(mLock);
    if (mWorker != std::this_thread::get_id()) {
      if (mStopping) return false;
      mOrders.push_back({std::move(what), {}});
      done = mOrders.back().done.get_future();
      mChanged.notify_all();
    }
  }
  if (done.valid()) return done.get();
  what();
  return true;
}

void Stage::loop() {
  UniqueLock lock(mLock);
  mWorker = std::this_thread::get_id();
  while (!mStopping) {
    if (!mOrders.empty()) {
      Order order = std::move(mOrders.front());
      mOrders.pop_front();
      lock.unlock();
      order.what();
      order.done.set_value(true);
      lock.lock();
      continue;
    }
    const auto first = mToCome.begin();
    if (first == mToCome.end() || first->first > Clock::now()) {
      mChanged.wait_until(lock, first == mToCome.end() ? Clock::now() + kLongTime : first->first);
      continue;
    }
    const std::function<void()> what = std::move(first->second);
    mToCome.erase(first);
    lock.unlock();
    what();
    lock.lock();
  }
  for (Order& order : mOrders) order.done.set_value(false);
  mOrders.clear();
}

std::string Stage::perform(const Action& action, const std::string& words) {
  std::string reason = "nothing can be done any more";
  carryOut([&] { reason = actAndLog(action, words); });
  return reason;
}

std::string Stage::actAndLog(const Action& action, const std::string& words) {
  mDaemon.log(words);
  std::string reason = std::visit([this](const auto& what) { return act(what); }, action);
  if (!reason.empty()) logNotDone(reason);
  return reason;
}

void Stage::logNotDone(const std::string& reason) { mDaemon.log("not done: " + reason); }

std::string Stage::act(const HandoffOrder& order) {
  if (mDaemon.world().view().handoff) return "a handoff is under way";
  return mDaemon.world().orderHandoff(order);
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
    mGone = false;
    if (mFaultRefuses) {
      mDaemon.refuseConnections();
    } else {
      reappear();
    }
  });
  return {};
}

void Stage::reappear() {
  if (mDaemon.reappear()) return;
  const LockGuard lock(mLock);
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
    if (number == mFaults) endFault();
  };
}

// Ends all faults of the daemon.
void Stage::endFault() {
  mDaemon.setHandshake({});
  mDaemon.setFrameHandler({});
  mDaemon.setAccepting(true);
  mDaemon.setReading(true);
  // If the daemon is also gone, it comes back when that is over.
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
    if (number == mPauses) mDaemon.world().setPaused(false);
  };
}

std::function<void()> Stage::faultsEnd() {
  std::function<void()> end;
  carryOut([&] { end = faultsEnd(mFaults); });
  return end;
}

std::function<void()> Stage::pausesEnd() {
  std::function<void()> end;
  carryOut([&] { end = pausesEnd(mPauses); });
  return end;
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
