// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <array>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <string>
#include <vector>

#include "Kinds.h"
#include "ModelHistory.h"

namespace torture {

// A small model of what the library promises to applications. Its books are the records of all
// calls and callbacks, and it checks these rules with them.
//
// Each registration of a callback gets its own function for the whole round, its account. Each call
// has a start and an end on one clock. A service has a new period with each enable after a disable.
// These rules hold in any order of calls that overlap:
// - A function of a refused call is never called. A function of a criteria request is called at
//   most once.
// - After an accepted disable on an application thread has returned, no function that was
//   registered before it runs or is called, in whichever period it was registered. After a disable
//   inside a callback, each thread begins such a function at most once more, because it may have
//   been about to begin. The same rule holds for a function that another one has replaced.
// - A service is certainly enabled after an enable that no disable overlaps or follows. It is
//   certainly disabled after a disable that no enable overlaps or follows. Then results must agree
//   with that.
// - Disable returns in time after the last running callback of the service has ended, and at once
//   inside a callback. This is not checked if the machine kept the process from running meanwhile.
// - A report for a function of one period does not come from a connection of an earlier period.
// - No callback reports a lost service as long as the daemon did not misbehave.
//
// Used by any thread; mMutex guards everything and is never held while the library is called. Never
// destroyed, because callbacks may come while the process exits.
class ModelBooks {
 public:
  using Clock = std::chrono::steady_clock;
  using milliseconds = std::chrono::milliseconds;
  enum class What { Enable, EnableNull, Disable, Request, RequestInvalid };
  struct Call {
    What what;
    Service service;
    bool inside;  // the call is made inside a callback
    uint64_t start = 0;
    Clock::time_point began{};
    bool enabled = false;  // the service is certainly enabled
    bool disabled = false;
    uint64_t others = 0;  // number of calls that could change that
  };
  struct Totals {
    uint64_t calls = 0;
    uint64_t refused = 0;
    uint64_t callbacks = 0;
    uint64_t closed = 0;  // accounts that a disable has closed: no call may come any more
    uint64_t checkedResults = 0;
  };
  static constexpr size_t kPerKind = 192;

  static ModelBooks& get();
  void beginRound();
  // Checks the rules that only the end of a round can show.
  void endRound();

  // An account for a registration; -1 if all are in use.
  int open(Kind kind);
  // Called before and after each call. The end of a registration gets its account.
  Call begin(What what, Service service, bool inside);
  void end(const Call& call, int64_t result, bool accepted, Kind kind = kKinds, int account = -1);

  // A callback begins and ends. @p connection is the one that a report came from, 0 if unknown.
  // @p insideCall: it runs on the thread of a call.
  void beginCallback(Kind kind, int account, int value, uint64_t connection, bool insideCall);
  void endCallback(Kind kind, int account);
  // Inside a callback: makes it last longer, for @p atMost, or until its account is closed.
  void linger(Kind kind, int account, milliseconds atMost);
  // How many callbacks of the service have begun; waits until more than that have begun.
  uint64_t callbacks(Service service) const;
  bool awaitCallback(Service service, uint64_t before, milliseconds atMost);
  // Waits until other threads have made progress.
  void awaitProgress(uint64_t events, milliseconds atMost);
  // Waits until no callback runs; false if that takes too long.
  bool awaitSilence(milliseconds atMost);

  // The daemon reports the first frame of a connection, and that it misbehaved.
  void connectionStands(uint64_t connection);
  void harm() { mHarm = true; }
  // Threads did not run for so long that promises about time are not checked in this round.
  void starve() { mStarved = true; }
  bool starved() const { return mStarved; }

  // A number for a request that the daemon will get, the end of its call, and its arrival. The
  // caller keeps the latest start for each connection.
  uint32_t tag();
  void tagged(uint32_t tag, const Call& call, bool accepted);
  void arrived(uint32_t tag, uint64_t& latestStart);

  uint64_t accepted(What what, Service service) const;
  void mistake(const char* format, ...) __attribute__((format(printf, 2, 3)));
  // May be called with any lock held.
  bool mistaken() const { return mMistaken; }
  std::vector<std::string> mistakes() const;
  Totals totals() const;
  ModelHistory& history() { return mHistory; }

 private:
  enum class State { Free, Opening, Open, Refused, Closed };
  struct Account {
    State state = State::Free;
    uint64_t opened = 0;
    uint64_t registered = 0;  // when the call returned
    unsigned calls = 0;
    unsigned running = 0;
    const char* overBy = nullptr;  // why no thread may begin it more than once from now on
    std::vector<int> begunAfter;   // threads that have begun it since then
  };
  struct ServiceBook {
    uint64_t underWay[2] = {0, 0};  // numbers of enables and disables under way
    uint64_t begun[2] = {0, 0};
    uint64_t accepted[5] = {};
    uint64_t enabledFrom = 0;   // latest start of an accepted enable
    uint64_t enableEnd = 0;     // latest end of any enable
    uint64_t disabledFrom = 1;  // latest start of an accepted disable; disabled at first
    uint64_t disableEnd = 0;    // latest end of an accepted disable
    std::vector<std::pair<uint64_t, uint64_t>> disables;  // accepted: start, end
    std::vector<uint64_t> disabling;                      // starts of disables under way
    Clock::time_point lastCallback{};
  };
  struct Tag {
    uint64_t start = 0;
    uint64_t end = 0;
    bool refused = false;
    bool arrived = false;
  };

  Account& at(Kind kind, int account) { return mAccounts[kind][static_cast<size_t>(account)]; }
  void judgeResult(const Call& call, int64_t result, bool accepted);
  void judgeTime(const Call& call, bool accepted);
  void settle(const Call& call, bool accepted, Kind kind, int account);
  void closeBefore(const Call& call);
  bool besideADisable(const ServiceBook& book, const Account& account) const;
  void over(Account& account, const char* why);

  mutable std::mutex mMutex;
  std::condition_variable mChanged;
  uint64_t mClock = 1;
  uint64_t mRunning = 0;
  std::array<uint64_t, kServices> mCallbacks{};
  std::array<std::array<Account, kPerKind>, kKinds> mAccounts;
  std::array<size_t, kKinds> mNext{};
  std::array<ServiceBook, kServices> mServices;
  std::vector<Tag> mTags;
  std::vector<uint64_t> mConnections;  // when the first frame of each one came
  Totals mTotals;
  mutable std::mutex mMistakeMutex;  // guards the list; only the history's lock is taken after it
  std::vector<std::string> mMistakes;
  std::atomic<bool> mMistaken{false};
  std::atomic<bool> mHarm{false};
  std::atomic<bool> mStarved{false};
  std::vector<std::string> mLate;  // calls that took too long
  ModelHistory mHistory;
};

}  // namespace torture
