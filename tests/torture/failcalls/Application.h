// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <atomic>
#include <condition_variable>
#include <functional>
#include <mutex>

#include "Report.h"

// An application that uses all services and keeps account of what its callbacks hear.
namespace failcalls {

enum Service : unsigned { Lce, Lle, Lli, kServices };
const char* nameOf(Service service);
// The endpoint and the number of the service on the wire.
unsigned endpointOf(Service service);
unsigned sdkTypeOf(Service service);

// What a callback heard.
enum class Heard : unsigned { Success, InternalError, Down, Last, Report, Criteria, kCount };

// Called by any thread of the library and by the scenario's. mLock guards what follows it and is
// free while an action runs. Never destroyed, for threads may still call while the process exits.
class Application {
 public:
  static Application& get();

  void begin(Run& run) { mRun = &run; }

  // The functions of the services, with their time taken and their failures counted. Disable marks
  // the service: what it hears from then on is too late.
  bool enable(Service service);
  bool disable(Service service);
  bool isEnabled(Service service) const { return mEnabled[service]; }
  // A request; false when it was refused.
  bool request(const char* name, const std::function<int64_t()>& call);

  // Forgets what was heard so far.
  void listen();
  // Waits until @p what was heard at least @p times since listen(). What does not come is noted as
  // lost: soon after a call has failed, else after seconds.
  bool await(Service service, Heard what, unsigned times = 1);
  // The next "success" of the service runs @p action inside the callback.
  void inNextSuccess(Service service, std::function<void()> action);
  // Waits for that; false, with the action forgotten, when it does not come.
  bool awaitAction();

  // The loss of a connection is no news for the time being.
  void expectDown(bool expected) { mExpectsDown = expected; }

  // For callbacks.
  void hear(Service service, Heard what);
  void hearStatus(Service service, int status);

 private:
  Application() = default;
  int64_t timed(const char* name, const std::function<int64_t()>& call);
  bool waitFor(std::unique_lock<std::mutex>& lock, const std::function<bool()>& condition);

  Run* mRun = nullptr;
  std::atomic<bool> mExpectsDown{false};
  bool mEnabled[kServices] = {};  // the scenario's thread, and the one callback that disables

  std::mutex mLock;
  std::condition_variable mChanged;
  bool mOff[kServices] = {};
  unsigned mHeard[kServices][static_cast<unsigned>(Heard::kCount)] = {};
  Service mActionService = kServices;
  std::function<void()> mAction;
  bool mActionRuns = false;
  bool mActionDone = false;
};

}  // namespace failcalls
