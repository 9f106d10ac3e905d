// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "ChaosAccounts.h"

namespace torture {

using Guard = std::lock_guard<std::mutex>;

bool Accounts::idle(const Account& account) {
  if (account.running > 0) return false;
  switch (account.state) {
    case State::Opening:
    case State::Open:
      return false;
    case State::Released:
      return Clock::now() - account.released > kRest;
    default:
      return true;
  }
}

int Accounts::open(Kind kind) {
  const Guard lock(mMutex);
  for (size_t tried = 0; tried < kPerKind; ++tried) {
    const size_t index = mNext[kind];
    mNext[kind] = (index + 1) % kPerKind;
    Account& account = mAccounts[kind][index];
    if (!idle(account)) continue;
    account = {State::Opening, account.turn + 1, 0, 0, 0, {}};
    ++mTotals.opened;
    return static_cast<int>(index);
  }
  ++mTotals.none;
  return -1;
}

void Accounts::registered(Kind kind, int number, bool accepted) {
  const Guard lock(mMutex);
  Account& account = at(kind, number);
  account.registered = ++mClock;
  if (kind == kLceCriteria && accepted) ++mTotals.criteria;
  if (account.state == State::Released) account.released = Clock::now();
  if (account.state != State::Opening) return;
  account.state = accepted ? State::Open : State::Refused;
  if (accepted || kind != kLceCriteria) return;
  if (account.calls > 0) mistake("a refused request was answered", kind, number);
}

uint64_t Accounts::begin(Kind kind, int number) {
  const Guard lock(mMutex);
  Account& account = at(kind, number);
  ++mTotals.calls[kind];
  ++account.calls;
  ++account.running;
  if (account.turn == 0) mistake("called without a registration", kind, number);
  if (account.state == State::Closed) mistake("called after disable returned", kind, number);
  // Other callbacks may come for another reason just before their request is refused.
  if (kind == kLceCriteria) {
    ++mTotals.answered;
    if (account.state == State::Refused) mistake("a refused request was answered", kind, number);
    if (account.calls > 1) mistake("a request was answered twice", kind, number);
  }
  return account.turn;
}

void Accounts::linger(Kind kind, int number, std::chrono::milliseconds atMost) {
  std::unique_lock<std::mutex> lock(mMutex);
  const Account& account = at(kind, number);
  mClosed.wait_until(lock, std::chrono::system_clock::now() + atMost,
                     [&] { return account.state == State::Closed; });
}

void Accounts::end(Kind kind, int number, uint64_t turn) {
  const Guard lock(mMutex);
  Account& account = at(kind, number);
  if (account.turn == turn && account.running > 0) --account.running;
}

uint64_t Accounts::beginLeaving(Service service) {
  const Guard lock(mMutex);
  const uint64_t start = ++mClock;
  mUnderWay[service].insert(start);
  return start;
}

void Accounts::endLeaving(Service service, uint64_t start, bool done, bool insideCallback) {
  const Guard lock(mMutex);
  const uint64_t end = ++mClock;
  mUnderWay[service].erase(start);
  if (done && insideCallback) {
    forEach(service, [&](Kind, int, Account& account) {
      if (account.state != State::Opening && account.state != State::Open) return;
      account.state = State::Released;
      account.released = Clock::now();
      ++mTotals.released;
    });
  } else if (done) {
    mReturned[service].push_back({start, end});
  }
  settle(service);
}

// Closes the accounts of which no callback can come any more.
void Accounts::settle(Service service) {
  auto& returned = mReturned[service];
  const auto& underWay = mUnderWay[service];
  for (size_t i = 0; i < returned.size();) {
    if (!underWay.empty() && *underWay.begin() < returned[i].end) {
      ++i;
      continue;
    }
    closeBefore(service, returned[i].start);
    returned.erase(returned.begin() + static_cast<std::ptrdiff_t>(i));
  }
}

void Accounts::closeBefore(Service service, uint64_t time) {
  forEach(service, [&](Kind kind, int number, Account& account) {
    if (account.state != State::Open || account.registered > time) return;
    if (account.running > 0) mistake("ran on after disable returned", kind, number);
    account.state = State::Closed;
    ++mTotals.closed;
  });
  mClosed.notify_all();
}

template <class Action>
void Accounts::forEach(Service service, Action action) {
  for (int kind = 0; kind < kKinds; ++kind) {
    if (serviceOf(static_cast<Kind>(kind)) != service) continue;
    for (int i = 0; i < static_cast<int>(kPerKind); ++i) {
      action(static_cast<Kind>(kind), i, at(static_cast<Kind>(kind), i));
    }
  }
}

void Accounts::mistake(const char* what, Kind kind, int account) {
  mMistakes.push_back(std::string(what) + ": kind " + std::to_string(kind) + ", account " +
                      std::to_string(account));
}

Accounts::Totals Accounts::totals() const {
  const Guard lock(mMutex);
  return mTotals;
}

std::vector<std::string> Accounts::mistakes() const {
  const Guard lock(mMutex);
  return mMistakes;
}

}  // namespace torture
