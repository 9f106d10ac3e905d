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

// A small model of what applications are promised, and the books that it is checked with.
//
// Each registration of a callback has a function of its own for the whole round, its account.
// Each call has an interval on one clock. What follows holds whatever the order of calls that
// overlap, so it is certain:
// - A function of a refused call is never called; one of a criteria request at most once.
// - A disable on an application thread that was not refused: no function registered before it
//   runs or is called once it has returned, whichever time of the service it belongs to. Inside a
//   callback: no thread begins it more than once after that (it may have been about to).
//   The same goes for a function that another one has replaced.
// - A service is certainly enabled after an enable that no disable overlaps or follows, and
//   certainly disabled the other way round: results must agree.
// - Disable returns in time once no callback of the service runs, and at once inside a callback;
//   unless the machine has kept the process from running meanwhile.
// - A report for a function of a new time does not come from a connection of a former one.
// - Nobody hears of a lost service as long as the daemon did no harm.
//
// Any thread; mMutex guards all and is never held while the library is called. Never destroyed:
// callbacks may come while the process exits.
class ModelBooks {
 public:
  using Clock = std::chrono::steady_clock;
  using milliseconds = std::chrono::milliseconds;
  enum class What { Enable, EnableNull, Disable, Request, RequestInvalid };
  struct Call {
    What what;
    Service service;
    bool inside;  // a callback
    uint64_t start = 0;
    Clock::time_point began{};
    bool enabled = false;  // the service, for certain
    bool disabled = false;
    uint64_t others = 0;  // calls that could change that
  };
  struct Totals {
    uint64_t calls = 0;
    uint64_t refused = 0;
    uint64_t callbacks = 0;
    uint64_t closed = 0;  // accounts, by a disable that promises the end of their calls
    uint64_t checkedResults = 0;
  };
  static constexpr size_t kPerKind = 192;

  static ModelBooks& get();
  void beginRound();
  // Judges what can be judged at the end alone.
  void endRound();

  // An account for a registration; -1 when all are in use.
  int open(Kind kind);
  // Around each call. A registration's account is told with its end.
  Call begin(What what, Service service, bool inside);
  void end(const Call& call, int64_t result, bool accepted, Kind kind = kKinds, int account = -1);

  // A callback begins and ends. @p connection tells where a report came from, 0 when it does not;
  // @p insideCall, that it runs on the thread of a call.
  void beginCallback(Kind kind, int account, int value, uint64_t connection, bool insideCall);
  void endCallback(Kind kind, int account);
  // Inside a callback: takes its time, as long as nobody has been promised its end.
  void linger(Kind kind, int account, milliseconds atMost);
  // How many callbacks of the service have begun; waits until there are more than that.
  uint64_t callbacks(Service service) const;
  bool awaitCallback(Service service, uint64_t before, milliseconds atMost);
  // Waits until other threads have made progress.
  void awaitProgress(uint64_t events, milliseconds atMost);
  // Waits until no callback runs, or not.
  bool awaitSilence(milliseconds atMost);

  // The daemon's side: the first frame of a connection, and harm done to the library.
  void connectionStands(uint64_t connection);
  void harm() { mHarm = true; }
  // Threads did not run for so long that what has its time is not to be judged in this round.
  void starve() { mStarved = true; }
  bool starved() const { return mStarved; }

  // A number for a request that the daemon is to see, the end of its call, and its arrival; the
  // caller keeps what has arrived on one connection.
  uint32_t tag();
  void tagged(uint32_t tag, const Call& call, bool accepted);
  void arrived(uint32_t tag, uint64_t& latestStart);

  uint64_t accepted(What what, Service service) const;
  void mistake(const char* format, ...) __attribute__((format(printf, 2, 3)));
  // Any thread, whatever it holds.
  bool mistaken() const { return mMistaken; }
  std::vector<std::string> mistakes() const;
  Totals totals() const;
  ModelHistory& history() { return mHistory; }

 private:
  enum class State { Free, Opening, Open, Refused, Closed };
  struct Account {
    State state = State::Free;
    uint64_t opened = 0;
    uint64_t registered = 0;  // when the call had returned
    unsigned calls = 0;
    unsigned running = 0;
    const char* overBy = nullptr;  // why no thread may begin it once more
    std::vector<int> begunAfter;   // and those that have begun it after that
  };
  struct Life {
    uint64_t underWay[2] = {0, 0};  // enables, disables
    uint64_t begun[2] = {0, 0};
    uint64_t accepted[5] = {};
    uint64_t enabledFrom = 0;   // latest start of an accepted enable
    uint64_t enableEnd = 0;     // latest end of any enable
    uint64_t disabledFrom = 1;  // latest start of an accepted disable; disabled at first
    uint64_t disableEnd = 0;    // latest end of an accepted disable
    std::vector<std::pair<uint64_t, uint64_t>> disables;  // accepted: start, end
    std::vector<uint64_t> disabling;                      // starts of those under way
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
  bool besideALeave(const Life& life, const Account& account) const;
  void over(Account& account, const char* why);

  mutable std::mutex mMutex;
  std::condition_variable mChanged;
  uint64_t mClock = 1;
  uint64_t mRunning = 0;
  std::array<uint64_t, kServices> mCallbacks{};
  std::array<std::array<Account, kPerKind>, kKinds> mAccounts;
  std::array<size_t, kKinds> mNext{};
  std::array<Life, kServices> mLives;
  std::vector<Tag> mTags;
  std::vector<uint64_t> mConnections;  // when each one stood
  Totals mTotals;
  mutable std::mutex mMistakeMutex;  // guards the list; taken last but for the history's
  std::vector<std::string> mMistakes;
  std::atomic<bool> mMistaken{false};
  std::atomic<bool> mHarm{false};
  std::atomic<bool> mStarved{false};
  std::vector<std::string> mLate;  // calls that took too long
  ModelHistory mHistory;
};

}  // namespace torture
