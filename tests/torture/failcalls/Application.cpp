// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "Application.h"

#include <orb/sdl.h>

#include <algorithm>
#include <utility>

namespace failcalls {

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::seconds kWithoutFailure(3);
constexpr std::chrono::milliseconds kLook(2);

template <Service kService>
void onStatus(status_e status) {
  Application::get().hearStatus(kService, status);
}

struct Functions {
  const char* name;
  unsigned endpoint;
  unsigned sdkType;
  int (*enable)();
  int (*disable)();
};

// In the order of Service.
const Functions kFunctions[] = {
    {"lce", 105, 7, [] { return orb_lce_enable(onStatus<Lce>); }, orb_lce_disable},
    {"lle", 106, 8, [] { return orb_lle_enable(onStatus<Lle>); }, orb_lle_disable},
    {"lli", 107, 9, [] { return orb_lli_enable(onStatus<Lli>); }, orb_lli_disable},
};

const char* const kHeardNames[] = {"success", "internal error", "down",
                                   "answer",  "report",         "criteria answer"};

}  // namespace

const char* nameOf(Service service) { return kFunctions[service].name; }
unsigned endpointOf(Service service) { return kFunctions[service].endpoint; }
unsigned sdkTypeOf(Service service) { return kFunctions[service].sdkType; }

Application& Application::get() {
  static Application* const application = new Application;
  return *application;
}

int64_t Application::timed(const char* name, const std::function<int64_t()>& call) {
  const Clock::time_point start = Clock::now();
  const int64_t result = call();
  const auto taken = std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - start);
  const auto milliseconds = static_cast<unsigned>(taken.count());
  if (milliseconds > mRun->report.slowest) {
    mRun->report.slowest = milliseconds;
    put(mRun->report.slowestName, name);
  }
  return result;
}

bool Application::enable(Service service) {
  {
    const std::lock_guard<std::mutex> lock(mLock);
    mOff[service] = false;
  }
  const std::string name = std::string("orb_") + nameOf(service) + "_enable";
  mEnabled[service] = timed(name.c_str(), kFunctions[service].enable) == 1;
  if (!mEnabled[service]) ++mRun->report.refused;
  return mEnabled[service];
}

bool Application::disable(Service service) {
  const std::string name = std::string("orb_") + nameOf(service) + "_disable";
  if (timed(name.c_str(), kFunctions[service].disable) != 1) {
    ++mRun->report.refused;
    return false;
  }
  mEnabled[service] = false;
  const std::lock_guard<std::mutex> lock(mLock);
  mOff[service] = true;
  return true;
}

bool Application::request(const char* name, const std::function<int64_t()>& call) {
  const bool accepted = timed(name, call) >= 0;
  if (!accepted) ++mRun->report.refused;
  return accepted;
}

void Application::listen() {
  const std::lock_guard<std::mutex> lock(mLock);
  for (auto& heard : mHeard) std::fill(std::begin(heard), std::end(heard), 0u);
}

bool Application::waitFor(std::unique_lock<std::mutex>& lock,
                          const std::function<bool()>& condition) {
  const std::atomic<unsigned>& injected = mRun->report.probe.injected;
  const Clock::time_point start = Clock::now();
  Clock::time_point end = start + kWithoutFailure;
  bool failed = false;
  while (!mChanged.wait_for(lock, kLook, condition)) {
    const Clock::time_point now = Clock::now();
    if (!failed && injected != 0) {
      failed = true;
      end = std::min(end, now + mRun->patience);
    }
    if (now > end) return false;
  }
  return true;
}

bool Application::await(Service service, Heard what, unsigned times) {
  std::unique_lock<std::mutex> lock(mLock);
  const auto index = static_cast<unsigned>(what);
  if (waitFor(lock, [&] { return mHeard[service][index] >= times; })) return true;
  if (mRun->report.lost++ == 0) {
    put(mRun->report.firstLost,
        std::string(nameOf(service)) + " " + kHeardNames[index] + " in " + mRun->report.phase);
  }
  return false;
}

void Application::inNextSuccess(Service service, std::function<void()> action) {
  const std::lock_guard<std::mutex> lock(mLock);
  mActionService = service;
  mAction = std::move(action);
  mActionRuns = mActionDone = false;
}

bool Application::awaitAction() {
  std::unique_lock<std::mutex> lock(mLock);
  if (waitFor(lock, [&] { return mActionDone; })) return true;
  mAction = nullptr;
  if (mActionRuns) mChanged.wait(lock, [&] { return mActionDone; });
  return mActionDone;
}

void Application::hear(Service service, Heard what) {
  std::function<void()> action;
  {
    const std::lock_guard<std::mutex> lock(mLock);
    if (mOff[service] && mRun->report.late++ == 0) {
      put(mRun->report.firstLate, std::string(nameOf(service)) + " " +
                                      kHeardNames[static_cast<unsigned>(what)] + " in " +
                                      mRun->report.phase);
    }
    ++mHeard[service][static_cast<unsigned>(what)];
    if (what == Heard::Success && mActionService == service && mAction) {
      action.swap(mAction);
      mActionRuns = true;
    }
    mChanged.notify_all();
  }
  if (!action) return;
  action();
  const std::lock_guard<std::mutex> lock(mLock);
  mActionDone = true;
  mChanged.notify_all();
}

void Application::hearStatus(Service service, int status) {
  if (status == STATUS_INTERNAL_ERROR) ++mRun->report.errors;
  if (status == STATUS_SERVICE_DOWN && !mExpectsDown) ++mRun->report.downs;
  if (status == STATUS_SUCCESS) hear(service, Heard::Success);
  if (status == STATUS_INTERNAL_ERROR) hear(service, Heard::InternalError);
  if (status == STATUS_SERVICE_DOWN) hear(service, Heard::Down);
}

}  // namespace failcalls
