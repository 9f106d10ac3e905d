// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <optional>
#include <vector>

#include "orbctl/LibraryClient.h"

namespace orbctl {

// Keeps services going while the daemon comes and goes. The library repeats nothing: after a loss
// each service is to be enabled anew, and each request that waits for an absent daemon takes about
// five seconds of its own. So one service at a time is asked, its requests are made when it has
// answered, and pauses between attempts grow. Used by the main thread; no lock.
class Following {
 public:
  enum class State { kAway, kAsking, kUp, kRefused };

  static constexpr std::chrono::milliseconds kFirstPause{250};
  static constexpr std::chrono::milliseconds kLongestPause{5000};
  // A daemon that takes the connection and says nothing holds up all services: it is left again.
  static constexpr std::chrono::milliseconds kPatience{10000};

  Following(LibraryClient& client, std::vector<Service> services, Requests requests);

  // Takes an event of the queue. True: it is news, to be shown. `more` gets what follows from it.
  bool handle(const Event& event, std::optional<Event>& more);
  // Does what is due now; gives news of the daemon where there are any.
  std::optional<Event> advance(Clock::time_point now);
  // When advance() is next to be called.
  std::optional<Clock::time_point> nextDue() const;

  const std::vector<Service>& services() const { return mServices; }
  State state(Service service) const { return mStates[indexOf(service)]; }
  // The status that the service told last.
  std::optional<status_e> lastStatus(Service service) const { return mLast[indexOf(service)]; }
  // When the next attempt begins, while nothing is asked.
  std::optional<Clock::time_point> nextAttempt() const;
  // Whether any service has been enabled so far.
  bool everUp() const { return mEverUp; }
  // The library could not be set up; there is nothing to wait for.
  bool broken() const { return mBroken; }

 private:
  void answered(Service service, status_e status, Clock::time_point now);
  void lost(Service service, Clock::time_point now);
  void attemptFailed(Clock::time_point now);
  std::optional<Event> daemonNews(Service service, Clock::time_point now);
  State& stateOf(Service service) { return mStates[indexOf(service)]; }
  std::optional<Service> firstAway() const;

  LibraryClient& mClient;
  const std::vector<Service> mServices;
  const Requests mRequests;
  PerService<State> mStates = {};
  PerService<std::optional<status_e>> mLast;
  std::optional<Service> mAsking;
  Clock::time_point mAskedAt;
  Clock::time_point mNextAttempt;
  std::chrono::milliseconds mPause{0};
  std::optional<bool> mDaemonUp;  // as told last
  bool mEverUp = false;
  bool mBroken = false;
};

}  // namespace orbctl
