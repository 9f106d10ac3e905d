// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "orbctl/Following.h"

#include <algorithm>
#include <utility>

namespace orbctl {

Following::Following(LibraryClient& client, std::vector<Service> services, Requests requests)
    : mClient(client), mServices(std::move(services)), mRequests(std::move(requests)) {}

bool Following::handle(const Event& event, std::optional<Event>& more) {
  if (!mClient.isCurrent(event)) return false;
  const auto* const status = std::get_if<StatusEvent>(&event.data);
  if (status == nullptr) return true;
  mLast[indexOf(event.service)] = status->status;
  const bool asking = mAsking == event.service;
  if (status->status == STATUS_SERVICE_DOWN) {
    // Every service reports each lost connection, so one loss is reported several times.
    const bool news = asking || state(event.service) != State::kAway;
    lost(event.service, event.at);
    more = daemonNews(event.service, event.at);
    return news;
  }
  if (asking) {
    answered(event.service, status->status, event.at);
    more = daemonNews(event.service, event.at);
  } else if (status->status == STATUS_SERVICE_UP && state(event.service) != State::kUp) {
    stateOf(event.service) = State::kAway;
    mNextAttempt = event.at;
  }
  return true;
}

std::optional<Event> Following::advance(Clock::time_point now) {
  if (mAsking) {
    if (now < mAskedAt + kPatience) return std::nullopt;
    const Service silent = *mAsking;
    mAsking.reset();
    mClient.disable(silent);
    stateOf(silent) = State::kAway;
    attemptFailed(now);
    return daemonNews(silent, now);
  }
  const std::optional<Service> next = firstAway();
  if (!next || now < mNextAttempt) return std::nullopt;
  stateOf(*next) = State::kAsking;
  mAsking = next;
  mAskedAt = now;
  mBroken = !mClient.enable(*next);
  return std::nullopt;
}

std::optional<Clock::time_point> Following::nextDue() const {
  if (mAsking) return mAskedAt + kPatience;
  if (firstAway()) return mNextAttempt;
  return std::nullopt;
}

std::optional<Clock::time_point> Following::nextAttempt() const {
  if (mAsking || !firstAway()) return std::nullopt;
  return mNextAttempt;
}

void Following::answered(Service service, status_e status, Clock::time_point now) {
  mAsking.reset();
  mPause = std::chrono::milliseconds(0);
  mNextAttempt = now;
  if (status != STATUS_SUCCESS && status != STATUS_SERVICE_UP) {
    stateOf(service) = State::kRefused;
    return;
  }
  stateOf(service) = State::kUp;
  mEverUp = true;
  mBroken = !mClient.request(service, mRequests);
}

void Following::lost(Service service, Clock::time_point now) {
  const State former = std::exchange(stateOf(service), State::kAway);
  if (mAsking == service) {
    mAsking.reset();
    attemptFailed(now);
  } else if (former != State::kAway) {
    // A short pause, during which the other reports of the same loss arrive.
    mNextAttempt = std::max(mNextAttempt, now + kFirstPause);
  }
}

void Following::attemptFailed(Clock::time_point now) {
  mPause = std::clamp(2 * mPause, kFirstPause, kLongestPause);
  mNextAttempt = now + mPause;
}

std::optional<Event> Following::daemonNews(Service service, Clock::time_point now) {
  // A service that refuses also shows that the daemon is there.
  const bool up = std::any_of(mServices.begin(), mServices.end(), [this](Service each) {
    return state(each) == State::kUp || state(each) == State::kRefused;
  });
  if (mDaemonUp == up) return std::nullopt;
  mDaemonUp = up;
  return Event{service, 0, now, WallClock::now(), DaemonEvent{up}};
}

std::optional<Service> Following::firstAway() const {
  for (const Service service : mServices) {
    if (state(service) == State::kAway) return service;
  }
  return std::nullopt;
}

}  // namespace orbctl
