// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <array>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "Kinds.h"

namespace torture {

// The books of the chaos test. Each registration of a callback (enable, create, request) has a
// function of its own for as long as the library may call it, its account; so whatever is called
// can be put to one registration.
//
// When is an account closed? A registration that returned before a disable was called is with the
// object that this disable takes away, or with one that an earlier disable has taken away and that
// may still be waiting for its callbacks. So the accounts from before a successful disable are
// closed once that and all that were under way at its end have returned; no callback of a closed
// account may begin or be running. A disable inside a callback promises nothing about running
// callbacks, so it only releases its accounts: they are no longer checked, and rest for a while
// before they are used again.
//
// Any thread; mMutex guards all and is never held while the library is called.
class Accounts {
 public:
  static constexpr size_t kPerKind = 256;
  struct Totals {
    std::array<uint64_t, kKinds> calls{};
    uint64_t opened = 0;
    uint64_t closed = 0;    // with the promise that nothing is called any more
    uint64_t released = 0;  // by a disable inside a callback
    uint64_t none = 0;      // no account was free
    uint64_t criteria = 0;  // accepted criteria requests
    uint64_t answered = 0;  // of these
  };

  // An account for a registration that is about to be made; -1 when all are in use.
  int open(Kind kind);
  // The registering call has returned; a refused one has registered nothing.
  void registered(Kind kind, int account, bool accepted);

  // A callback begins and ends. In between it may take its time: all that lingering waits for is a
  // disable that does not wait for it.
  uint64_t begin(Kind kind, int account);
  void linger(Kind kind, int account, std::chrono::milliseconds atMost);
  void end(Kind kind, int account, uint64_t turn);

  // Around a disable or destroy.
  uint64_t beginLeaving(Service service);
  void endLeaving(Service service, uint64_t start, bool done, bool insideCallback);

  Totals totals() const;
  std::vector<std::string> mistakes() const;

 private:
  enum class State { Free, Opening, Open, Refused, Released, Closed };
  using Clock = std::chrono::steady_clock;
  static constexpr std::chrono::seconds kRest{5};
  struct Account {
    State state = State::Free;
    uint64_t turn = 0;        // grows with each use
    uint64_t registered = 0;  // when the registering call returned
    unsigned calls = 0;
    unsigned running = 0;
    Clock::time_point released{};
  };
  struct Leaving {
    uint64_t start;
    uint64_t end;
  };

  Account& at(Kind kind, int account) { return mAccounts[kind][static_cast<size_t>(account)]; }
  static bool idle(const Account& account);
  void settle(Service service);
  void closeBefore(Service service, uint64_t time);
  void mistake(const char* what, Kind kind, int account);
  template <class Action>
  void forEach(Service service, Action action);

  mutable std::mutex mMutex;
  std::condition_variable mClosed;
  uint64_t mClock = 0;
  std::array<std::array<Account, kPerKind>, kKinds> mAccounts;
  std::array<size_t, kKinds> mNext{};
  std::array<std::set<uint64_t>, kServices> mUnderWay;
  std::array<std::vector<Leaving>, kServices> mReturned;  // not all from before have
  Totals mTotals;
  std::vector<std::string> mMistakes;
};

}  // namespace torture
