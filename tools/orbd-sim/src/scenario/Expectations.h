// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

#pragma once

#include <deque>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "Action.h"
#include "orbsim/Control.h"

namespace orbsim {

// Watches what clients do, and judges it. Times are those of the scenario, and missing before it
// has begun. Any thread may use it; `mLock` guards everything.
class Expectations {
 public:
  using Time = std::optional<Milliseconds>;

  explicit Expectations(const std::vector<Expectation>& expectations);

  void request(const RequestWords& request, Time time);
  void session(const SessionView& session, bool open, Time time);

  // Until when something is to be watched still; nothing when all is decided that can be before
  // the end. `timelineEnd` stands for those that have no time.
  std::optional<Milliseconds> watchUntil(Milliseconds timelineEnd) const;
  // What was not as expected, `atEnd`: what did not come will not come.
  std::vector<std::string> failures(Time now, bool atEnd) const;

 private:
  struct Watch {
    Expectation what;
    bool met = false;
    std::string violation;
    std::deque<Milliseconds> recent;  // of the last second

    bool inTime(Time time) const;
    bool wanted() const {
      return what.kind == Expectation::Kind::kSends || what.kind == Expectation::Kind::kReconnects;
    }
    std::optional<Milliseconds> end() const;
    std::string missing() const;
  };

  static void count(Watch& watch, Time time);
  bool isBack(const SessionView& session) const;

  mutable std::mutex mLock;
  std::vector<Watch> mWatches;
  std::set<int> mEndedProcesses;                // that had a session which has ended
  std::set<uint64_t> mEndedEndpoints;           // the same
  std::set<std::pair<int, uint64_t>> mClients;  // that had a session: process and endpoint
};

}  // namespace orbsim
