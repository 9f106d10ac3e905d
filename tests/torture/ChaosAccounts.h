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

// The records of the chaos test. Each registration of a callback (enable, create, request) gets its
// own function, its account, for as long as the library may call it. So each callback belongs to
// exactly one registration.
//
// When is an account closed? A registration that returned before a disable began belongs to the
// service object that this disable removes, or to one that an earlier disable has removed and that
// may still wait for its callbacks. So the accounts from before a successful disable are closed
// when this disable and all disables under way at its end have returned. No callback of a closed
// account may begin or run. A disable inside a callback promises nothing about running callbacks,
// so it only releases its accounts: they are no longer checked, and are not used again for a while.
//
// Used by any thread; mMutex guards everything and is never held while the library is called.
class Accounts {
 public:
  static constexpr size_t kPerKind = 256;
  struct Totals {
    std::array<uint64_t, kKinds> calls{};
    uint64_t opened = 0;
    uint64_t closed = 0;    // no callback of these may come any more
    uint64_t released = 0;  // by a disable inside a callback
    uint64_t none = 0;      // no account was free
    uint64_t criteria = 0;  // accepted criteria requests
    uint64_t answered = 0;  // accepted criteria requests with an answer
  };

  // An account for a registration that is about to be made; -1 if all are in use.
  int open(Kind kind);
  // The registering call has returned. A refused call has registered nothing.
  void registered(Kind kind, int account, bool accepted);

  // A callback begins and ends. linger() makes it last longer, for @p atMost, or until its account
  // is closed, which shows that a disable did not wait for it.
  uint64_t begin(Kind kind, int account);
  void linger(Kind kind, int account, std::chrono::milliseconds atMost);
  void end(Kind kind, int account, uint64_t turn);

  // Called before and after a disable or destroy.
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
  std::array<std::vector<Leaving>, kServices> mReturned;  // until earlier ones have returned, too
  Totals mTotals;
  std::vector<std::string> mMistakes;
};

}  // namespace torture
