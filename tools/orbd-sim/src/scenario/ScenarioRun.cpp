// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

#include <algorithm>
#include <condition_variable>
#include <functional>
#include <map>
#include <mutex>
#include <set>
#include <utility>

#include "ControlServer.h"
#include "Expectations.h"
#include "Stage.h"
#include "orbsim/Scenario.h"
#include "orbsim/World.h"

namespace orbsim {

// The implementation of the run. Events of the daemon's threads go to the expectations. Steps of
// the timeline go to the world or, at their time, to the stage. `mLock` guards the start; waiting
// threads are woken with it.
class ScenarioRun::Player {
 public:
  Player(Scenario scenario, Options options)
      : mScenario(std::move(scenario)),
        mExpectations(data().expectations),
        mDaemon(configured(std::move(options))) {
    mDaemon.world().setBegun([this](Clock::time_point epoch) { begun(epoch); });
  }
  ~Player() { stop(); }

  void onEnd(std::function<void()> what) { mOnEnd = std::move(what); }
  std::string control(const std::string& path);
  bool start();
  void stop();
  const std::string& error() const { return mDaemon.error(); }
  bool waitUntilDecided(Milliseconds timeout);
  std::vector<std::string> failures();
  Daemon& daemon() { return mDaemon; }

 private:
  const ScenarioData& data() const { return *mScenario.data(); }
  Options configured(Options options);
  void begun(Clock::time_point epoch);
  void schedule(Clock::time_point epoch, const Step& step);
  void tellModel(const Step& step);
  void makeState(const Step& step);
  void orderModel(const Step& step);
  static bool isModel(const Action& action) {
    return std::holds_alternative<HandoffOrder>(action) ||
           std::holds_alternative<RateAction>(action) ||
           std::holds_alternative<LatencyAction>(action) ||
           std::holds_alternative<TechnologyAction>(action);
  }
  // Logs the step.
  static std::string wordsOf(const Step& step) { return "scenario: " + step.words; }
  // Performs the steps that must be done before a client can connect.
  static bool isState(const Action& action);
  Milliseconds timelineEnd() const;
  Expectations::Time now() { return mDaemon.world().now(); }
  void changed() {
    const std::lock_guard<std::mutex> lock(mLock);
    mChanged.notify_all();
  }

  const Scenario mScenario;
  Expectations mExpectations;
  mutable std::mutex mLock;
  std::condition_variable mChanged;
  std::optional<Clock::time_point> mEpoch;
  bool mOver = false;
  std::set<size_t>
      mDone;  // steps done before the start; only for the owner's thread, before the start
  std::map<const Step*, uint64_t>
      mHandoffs;  // numbers of the device's orders; constant after the start
  struct End {
    Milliseconds at;
    std::function<void()> what;
  };
  std::vector<End> mEnds;  // for steps done before the start
  std::function<void()> mOnEnd;
  Daemon mDaemon;
  Stage mStage{mDaemon};
  ControlServer mControl{mDaemon, mStage};
};

Options ScenarioRun::Player::configured(Options options) {
  mScenario.configure(options);
  options.onFrame = [this](const Frame& frame) {
    mExpectations.request(orbsim::wordsOf(frame), now());
    changed();
  };
  options.onSession = [this](const SessionView& session, bool open) {
    mExpectations.session(session, open, now());
    changed();
  };
  return options;
}

bool ScenarioRun::Player::isState(const Action& action) {
  return std::holds_alternative<DelayAction>(action) || std::holds_alternative<Refusal>(action) ||
         std::holds_alternative<FaultAction>(action) || std::holds_alternative<PauseAction>(action);
}

bool ScenarioRun::Player::start() {
  std::vector<const FaultAction*> faults;
  for (size_t i = 0; i < data().timeline.size(); ++i) {
    const Step& step = data().timeline[i];
    if (isModel(step.action)) {
      orderModel(step);
    } else if (step.at.count() == 0 && isState(step.action)) {
      makeState(step);
      if (const auto* const fault = std::get_if<FaultAction>(&step.action)) faults.push_back(fault);
      mDone.insert(i);
    }
  }
  if (!mDaemon.start()) return false;
  for (const FaultAction* const fault : faults) fault->faults.apply(mDaemon);
  return true;
}

// If the step has a length, it is counted from the start, so its end becomes a separate step.
void ScenarioRun::Player::makeState(const Step& step) {
  Action action = step.action;
  auto* const fault = std::get_if<FaultAction>(&action);
  auto* const pause = std::get_if<PauseAction>(&action);
  std::optional<Milliseconds> length;
  if (fault != nullptr) length = std::exchange(fault->length, std::nullopt);
  if (pause != nullptr) length = std::exchange(pause->length, std::nullopt);
  mStage.perform(action, wordsOf(step));
  if (length)
    mEnds.push_back({*length, fault != nullptr ? mStage.faultsEnd() : mStage.pausesEnd()});
}

void ScenarioRun::Player::orderModel(const Step& step) {
  World& world = mDaemon.world();
  if (const auto* const order = std::get_if<HandoffOrder>(&step.action)) {
    mHandoffs[&step] = world.orderHandoff(*order, step.at);
  } else if (const auto* const rate = std::get_if<RateAction>(&step.action)) {
    world.orderRate(rate->ramp, step.at);
  } else if (const auto* const latency = std::get_if<LatencyAction>(&step.action)) {
    world.orderLatency(latency->ramp, step.at);
  } else if (const auto* const rat = std::get_if<TechnologyAction>(&step.action)) {
    world.orderTechnology(rat->rat, step.at);
  }
}

void ScenarioRun::Player::schedule(Clock::time_point epoch, const Step& step) {
  mStage.at(epoch + step.at, [this, &step] {
    if (isModel(step.action)) {
      tellModel(step);
    } else {
      mStage.perform(step.action, wordsOf(step));
    }
  });
}

// The device does this step itself and has done it by then.
void ScenarioRun::Player::tellModel(const Step& step) {
  mDaemon.log(wordsOf(step));
  const auto handoff = mHandoffs.find(&step);
  if (handoff == mHandoffs.end() || !mDaemon.world().isPointless(handoff->second)) return;
  mStage.logNotDone(std::get<HandoffOrder>(step.action).alreadyThere());
}

// Runs on the thread that begins the time, which may be a thread of the daemon.
void ScenarioRun::Player::begun(Clock::time_point epoch) {
  for (size_t i = 0; i < data().timeline.size(); ++i) {
    if (mDone.count(i) != 0) continue;
    schedule(epoch, data().timeline[i]);
  }
  for (const End& end : mEnds) mStage.at(epoch + end.at, end.what);
  if (data().end && mOnEnd) mStage.at(epoch + *data().end, mOnEnd);
  const std::lock_guard<std::mutex> lock(mLock);
  mEpoch = epoch;
  mChanged.notify_all();
}

std::string ScenarioRun::Player::control(const std::string& path) {
  return mControl.open(path) ? std::string() : mControl.error();
}

void ScenarioRun::Player::stop() {
  mControl.close();
  mStage.stop();
  mDaemon.stop();
  const std::lock_guard<std::mutex> lock(mLock);
  mOver = true;
  mChanged.notify_all();
}

Milliseconds ScenarioRun::Player::timelineEnd() const {
  Milliseconds last{0};
  for (const Step& step : data().timeline) {
    Milliseconds end = step.at;
    if (const auto* const vanish = std::get_if<VanishAction>(&step.action)) end += vanish->length;
    if (const auto* const order = std::get_if<HandoffOrder>(&step.action)) {
      end += order->notice + order->duration;
    }
    last = std::max(last, end);
  }
  return last;
}

bool ScenarioRun::Player::waitUntilDecided(Milliseconds timeout) {
  const auto deadline = Clock::now() + timeout;
  const Milliseconds timeline = timelineEnd();
  std::unique_lock<std::mutex> lock(mLock);
  while (!mOver) {
    auto wake = deadline;
    if (mEpoch) {
      const auto watched = mExpectations.watchUntil(timeline);
      // A short time later, so that requests at the very end still count.
      const auto end = *mEpoch + std::max(timeline, watched.value_or(timeline)) + Milliseconds(1);
      if (Clock::now() >= end) return true;
      wake = std::min(wake, end);
    }
    if (Clock::now() >= deadline) return false;
    mChanged.wait_until(lock, wake);
  }
  return true;
}

std::vector<std::string> ScenarioRun::Player::failures() {
  bool over = false;
  {
    const std::lock_guard<std::mutex> lock(mLock);
    over = mOver;
  }
  std::vector<std::string> all = mExpectations.failures(now(), over);
  if (!mStage.error().empty()) all.push_back(mStage.error());
  if (over && !mDaemon.world().begun() && !data().timeline.empty()) {
    all.push_back("the scenario never began");
  }
  return all;
}

ScenarioRun::ScenarioRun(Scenario scenario, Options options)
    : mPlayer(std::make_unique<Player>(std::move(scenario), std::move(options))) {}

ScenarioRun::~ScenarioRun() = default;

bool ScenarioRun::start() { return mPlayer->start(); }

void ScenarioRun::onEnd(std::function<void()> what) { mPlayer->onEnd(std::move(what)); }

void ScenarioRun::stop() { mPlayer->stop(); }

const std::string& ScenarioRun::error() const { return mPlayer->error(); }

bool ScenarioRun::waitUntilDecided(std::chrono::milliseconds timeout) {
  return mPlayer->waitUntilDecided(timeout);
}

std::vector<std::string> ScenarioRun::failures() const { return mPlayer->failures(); }

Daemon& ScenarioRun::daemon() { return mPlayer->daemon(); }

std::string ScenarioRun::control(const std::string& path) { return mPlayer->control(path); }

}  // namespace orbsim
