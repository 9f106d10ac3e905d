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

// Observes what clients do and decides whether expectations are met. Times are those of the
// scenario; before it begins there are none. Any thread may use it; `mLock` guards everything.
class Expectations {
 public:
  using Time = std::optional<Milliseconds>;

  explicit Expectations(const std::vector<Expectation>& expectations);

  void request(const RequestWords& request, Time time);
  void session(const SessionView& session, bool open, Time time);

  // How long to observe; empty if everything is decided that can be decided before the end.
  // `timelineEnd` is used for expectations without a time.
  std::optional<Milliseconds> watchUntil(Milliseconds timelineEnd) const;
  // The expectations that are not met. `atEnd`: no more requests will come.
  std::vector<std::string> failures(Time now, bool atEnd) const;

 private:
  struct Watch {
    Expectation what;
    bool met = false;
    std::string violation;
    std::deque<Milliseconds> recent;  // in the last second

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
  std::set<int> mEndedProcesses;                // processes with an ended session
  std::set<uint64_t> mEndedEndpoints;           // endpoints with an ended session
  std::set<std::pair<int, uint64_t>> mClients;  // process and endpoint of all sessions
};

}  // namespace orbsim
