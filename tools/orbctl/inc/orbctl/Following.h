// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <optional>
#include <vector>

#include "orbctl/LibraryClient.h"

namespace orbctl {

// Keeps services enabled while the daemon comes and goes. The library does not repeat requests:
// after a lost connection each service must be enabled again, and each request for an absent daemon
// takes about five seconds. So this class enables one service at a time, sends its requests after
// the answer, and increases the pauses between attempts. Used by the main thread; no lock.
class Following {
 public:
  enum class State { kAway, kAsking, kUp, kRefused };

  static constexpr std::chrono::milliseconds kFirstPause{250};
  static constexpr std::chrono::milliseconds kLongestPause{5000};
  // A daemon that accepts the connection but does not answer blocks all services; after this time
  // the service is disabled.
  static constexpr std::chrono::milliseconds kPatience{10000};

  Following(LibraryClient& client, std::vector<Service> services, Requests requests);

  // Handles an event of the queue. True if the event is new information to show. `more` gets a
  // following event, if any.
  bool handle(const Event& event, std::optional<Event>& more);
  // Does everything that is due now; returns news about the daemon, if any.
  std::optional<Event> advance(Clock::time_point now);
  // The next time to call advance().
  std::optional<Clock::time_point> nextDue() const;

  const std::vector<Service>& services() const { return mServices; }
  State state(Service service) const { return mStates[indexOf(service)]; }
  // The last status of the service.
  std::optional<status_e> lastStatus(Service service) const { return mLast[indexOf(service)]; }
  // When the next attempt begins, if no attempt is running.
  std::optional<Clock::time_point> nextAttempt() const;
  // Whether any service was enabled so far.
  bool everUp() const { return mEverUp; }
  // The library could not be set up, so waiting is useless.
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
  std::optional<bool> mDaemonUp;  // last reported state
  bool mEverUp = false;
  bool mBroken = false;
};

}  // namespace orbctl
