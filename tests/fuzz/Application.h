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

// The application's side of a script: it calls the C API, on the script's thread and inside its
// callbacks, checks the results and what the callbacks get, and that no callback of a service comes
// once its disable has returned. There is one, as callbacks have no context; it stays for good. The
// script belongs to one thread, callbacks may come on any. mMutex guards what is not atomic and is
// never held while the library is called.
class Application {
 public:
  static constexpr size_t kServices = 3;  // LCE, LLE, LLI
  enum class Verb : uint8_t { Enable, Create, Disable, Destroy, Request };
  struct Deed {
    Verb verb = Verb::Enable;
    size_t service = 0;
    uint8_t detail = 0;  // of a request: which one, with what
  };

  static Application& get();

  // On the script's thread.
  void perform(const Deed& deed) { perform(deed, false); }
  // To be done inside the next callback of the service.
  void arm(size_t service, const Deed& deed);
  // Waits for a moment for one callback more of the service than there have been.
  void awaitCallback(size_t service, std::chrono::milliseconds timeout);
  // Whether a service may be waiting for the daemon.
  bool anyEnabled() const;
  // Disables everything and waits until nothing that callbacks have begun is under way.
  void finish();
  // Once the library has no thread left: from here on no callback may come.
  void forget();

  // Every callback begins with this.
  void inCallback(size_t service);

 private:
  struct Service {
    std::atomic<bool> mayCall{false};  // callbacks may come: an enable has begun
    std::atomic<unsigned> enablesBegun{0};
    std::atomic<unsigned> enablesDone{0};
    std::atomic<bool> leftInside{false};  // disabled inside a callback, which ends whenever it does
    size_t callbacks = 0;
    std::optional<Deed> armed;
  };

  void perform(const Deed& deed, bool inside);
  void open(const Deed& deed);
  void close(const Deed& deed, bool inside);

  std::array<Service, kServices> mServices;
  std::mutex mMutex;
  std::condition_variable mChanged;
  unsigned mInsideDeeds = 0;  // deeds under way in callbacks
};
