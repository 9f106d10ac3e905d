// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <array>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <optional>

// The application's part of a script. It calls the C API on the script's thread and inside its
// callbacks. It checks the results, what the callbacks get, and that no callback of a service comes
// after its disable has returned. There is one object, because callbacks have no context argument;
// it is never destroyed. The script runs on one thread, callbacks come on any thread. mMutex guards
// what is not atomic and is never held while the library is called.
class Application {
 public:
  static constexpr size_t kServices = 3;  // LCE, LLE, LLI
  enum class Verb : uint8_t { Enable, Create, Disable, Destroy, Request };
  struct Action {
    Verb verb = Verb::Enable;
    size_t service = 0;
    uint8_t detail = 0;  // of a request: which one, and its arguments
  };

  static Application& get();

  // Called on the script's thread.
  void perform(const Action& action) { perform(action, false); }
  // Performs it inside the next callback of the service.
  void arm(size_t service, const Action& action);
  // Waits until the service gets one more callback, for @p timeout at most.
  void awaitCallback(size_t service, std::chrono::milliseconds timeout);
  // Whether a service may wait for the daemon.
  bool anyEnabled() const;
  // Disables everything and waits until no call inside a callback is under way.
  void finish();
  // Called when the library has no thread left. From then on no callback may come.
  void forget();

  // Each callback calls this first.
  void inCallback(size_t service);

 private:
  struct Service {
    std::atomic<bool> mayCall{false};  // callbacks may come: an enable has begun
    std::atomic<unsigned> enablesBegun{0};
    std::atomic<unsigned> enablesDone{0};
    std::atomic<bool> leftInside{false};  // disabled inside a callback, which may end later
    size_t callbacks = 0;
    std::optional<Action> armed;
  };

  void perform(const Action& action, bool inside);
  void open(const Action& action);
  void close(const Action& action, bool inside);

  std::array<Service, kServices> mServices;
  std::mutex mMutex;
  std::condition_variable mChanged;
  unsigned mActionsInside = 0;  // actions under way in callbacks
};
