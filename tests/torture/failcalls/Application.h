// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <atomic>
#include <condition_variable>
#include <functional>
#include <mutex>

#include "Report.h"

// An application that uses all services and records what its callbacks get.
namespace failcalls {

enum Service : unsigned { Lce, Lle, Lli, kServices };
const char* nameOf(Service service);
// The endpoint and the number of the service on the wire.
unsigned endpointOf(Service service);
unsigned sdkTypeOf(Service service);

// What a callback got.
enum class Heard : unsigned { Success, InternalError, Down, Last, Report, Criteria, kCount };

// Called by any thread of the library and by the scenario's thread. mLock guards the members below
// it and is not held while an action runs. Never destroyed, because threads may call while the
// process exits.
class Application {
 public:
  static Application& get();

  void begin(Run& run) { mRun = &run; }

  // The functions of the services. These measure the time and count the failures. After disable,
  // each callback of the service is too late.
  bool enable(Service service);
  bool disable(Service service);
  bool isEnabled(Service service) const { return mEnabled[service]; }
  // Makes a request; false if it was refused.
  bool request(const char* name, const std::function<int64_t()>& call);

  // Removes what was recorded so far.
  void listen();
  // Waits until callbacks got @p what at least @p times since listen(). What does not come is
  // recorded as lost: after a short time if a call has failed, otherwise after some seconds.
  bool await(Service service, Heard what, unsigned times = 1);
  // The next "success" of the service runs @p action inside the callback.
  void inNextSuccess(Service service, std::function<void()> action);
  // Waits for that. If it does not come: false, and the action is removed.
  bool awaitAction();

  // For now, the loss of a connection is expected and not counted.
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
