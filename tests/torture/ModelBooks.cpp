// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "ModelBooks.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>

#include "Torture.h"

namespace torture {
namespace {

using Guard = std::lock_guard<std::mutex>;
using What = ModelBooks::What;

// The library promises 500 ms and "at once". These limits are longer for a machine under load, but
// many callbacks last longer than the second one.
constexpr std::chrono::milliseconds kInTime(2000);
constexpr std::chrono::milliseconds kAtOnce(1000);

const char* textOf(What what) {
  constexpr const char* kTexts[] = {"enable", "enable(NULL)", "disable", "request",
                                    "request(invalid)"};
  return kTexts[static_cast<size_t>(what)];
}
// Whether a callback reports a loss. A call reports an internal error itself if another call has
// come in between.
bool tellsOfLoss(Kind kind, int value, bool insideCall) {
  switch (kind) {
    case kLceStatus:
    case kLleStatus:
    case kLliStatus:
      return value == STATUS_SERVICE_DOWN || (value == STATUS_INTERNAL_ERROR && !insideCall);
    case kLceStatusV2:
    case kLleStatusV2:
    case kLliStatusV2:
      return value == STATUS_V2_SERVICE_DOWN || (value == STATUS_V2_INTERNAL_ERROR && !insideCall);
    default:
      return false;
  }
}
// The index of the call in the counters of calls under way.
int counterOf(What what) { return what == What::Enable ? 0 : what == What::Disable ? 1 : -1; }

}  // namespace

ModelBooks& ModelBooks::get() {
  static ModelBooks* const books = new ModelBooks;
  return *books;
}

void ModelBooks::beginRound() {
  const Guard lock(mMutex);
  mHistory.clear();
  mAccounts = {};
  mNext = {};
  mServices = {};
  mCallbacks = {};
  mTags.clear();
  mConnections.assign(1, 0);
  mClock = 1;
  mHarm = false;
  mStarved = false;
  mLate.clear();
}

void ModelBooks::endRound() {
  const Guard lock(mMutex);
  for (const std::string& late : mLate) {
    if (!mStarved) mistake("%s", late.c_str());
  }
}

int ModelBooks::open(Kind kind) {
  const Guard lock(mMutex);
  if (mNext[kind] == kPerKind) return -1;
  const int account = static_cast<int>(mNext[kind]++);
  at(kind, account).state = State::Opening;
  at(kind, account).opened = ++mClock;
  return account;
}

ModelBooks::Call ModelBooks::begin(What what, Service service, bool inside) {
  mHistory.add("%s%s %s", inside ? "inside a callback: " : "", textOf(what), nameOf(service));
  const Guard lock(mMutex);
  ServiceBook& book = mServices[service];
  Call call{what, service, inside};
  call.start = ++mClock;
  call.began = Clock::now();
  call.enabled = book.underWay[1] == 0 && book.enabledFrom > book.disableEnd;
  call.disabled = book.underWay[0] == 0 && book.disabledFrom > book.enableEnd;
  const int counter = counterOf(what);
  if (what == What::Disable) book.disabling.push_back(call.start);
  if (counter >= 0) {
    ++book.underWay[counter];
    ++book.begun[counter];
  }
  call.others = call.enabled ? book.begun[1] : book.begun[0];
  return call;
}

void ModelBooks::end(const Call& call, int64_t result, bool accepted, Kind kind, int account) {
  mHistory.add("%s%s %s -> %lld%s%s", call.inside ? "inside a callback: " : "", textOf(call.what),
               nameOf(call.service), static_cast<long long>(result), accepted ? "" : " (refused)",
               account < 0
                   ? ""
                   : (std::string(", ") + nameOf(kind) + " " + std::to_string(account)).c_str());
  const Guard lock(mMutex);
  ServiceBook& book = mServices[call.service];
  const uint64_t now = ++mClock;
  ++mTotals.calls;
  if (!accepted) ++mTotals.refused;
  const int counter = counterOf(call.what);
  if (counter >= 0) --book.underWay[counter];
  if (call.what == What::Disable) {
    book.disabling.erase(std::find(book.disabling.begin(), book.disabling.end(), call.start));
  }
  judgeResult(call, result, accepted);
  judgeTime(call, accepted);
  if (call.what == What::Enable) book.enableEnd = now;
  if (accepted) {
    ++book.accepted[static_cast<size_t>(call.what)];
    if (call.what == What::Enable) book.enabledFrom = std::max(book.enabledFrom, call.start);
    if (call.what == What::Disable) {
      book.disabledFrom = std::max(book.disabledFrom, call.start);
      book.disableEnd = now;
      book.disables.emplace_back(call.start, now);
      closeBefore(call);
    }
  }
  settle(call, accepted, kind, account);
  mChanged.notify_all();
}

// The call's service was certainly in one state during the whole call.
void ModelBooks::judgeResult(const Call& call, int64_t result, bool accepted) {
  const ServiceBook& book = mServices[call.service];
  const bool enabled = call.enabled && book.begun[1] == call.others;
  const bool disabled = call.disabled && book.begun[0] == call.others;
  if (enabled || disabled) ++mTotals.checkedResults;
  const char* const name = nameOf(call.service);
  const char* const what = textOf(call.what);
  const auto number = static_cast<long long>(result);
  switch (call.what) {
    case What::Enable:
      if (!accepted) mistake("%s of %s was refused", what, name);
      break;
    case What::EnableNull:
      if (accepted) mistake("%s of %s was not refused", what, name);
      break;
    case What::Disable:
      if (enabled && !accepted) mistake("%s of %s, enabled, was refused", what, name);
      if (disabled && accepted) mistake("%s of %s, disabled, was not refused", what, name);
      break;
    case What::Request:
      if (!accepted && result != -5) mistake("%s of %s: result %lld", what, name, number);
      if (enabled && !accepted) mistake("%s of %s, enabled: result %lld", what, name, number);
      if (disabled && accepted) mistake("%s of %s, disabled: result %lld", what, name, number);
      break;
    case What::RequestInvalid:
      if (result != -2 && (enabled || result != -5)) {
        mistake("%s of %s: result %lld", what, name, number);
      }
      break;
  }
}

void ModelBooks::judgeTime(const Call& call, bool accepted) {
  const Clock::time_point now = Clock::now();
  Clock::time_point from = call.began;
  // If the call waited for a callback, its time counts from the callback's end.
  const bool waits = call.what == What::Disable && accepted && !call.inside;
  if (waits) from = std::max(from, mServices[call.service].lastCallback);
  const auto took = std::chrono::duration_cast<milliseconds>(now - from);
  if (took <= (call.inside ? kAtOnce : kInTime)) return;
  mLate.push_back(std::string(textOf(call.what)) + " of " + nameOf(call.service) +
                  (call.inside ? " inside a callback took " : " took ") +
                  std::to_string(took.count()) + " ms");
  mHistory.add("%s", mLate.back().c_str());
}

// The registration that a call has made, and what follows from it.
void ModelBooks::settle(const Call& call, bool accepted, Kind kind, int number) {
  if (number < 0) return;
  Account& account = at(kind, number);
  account.registered = mClock;
  account.state = accepted ? State::Open : State::Refused;
  if (!accepted && account.calls > 0) {
    mistake("%s %d: the function of a refused call was called", nameOf(kind), number);
  }
  if (!accepted || kind == kLceCriteria) return;
  for (Account& other : mAccounts[kind]) {
    if (other.state == State::Open && other.registered < call.start) over(other, "replaced");
  }
}

void ModelBooks::over(Account& account, const char* why) {
  if (account.overBy == nullptr) account.overBy = why;
}

void ModelBooks::closeBefore(const Call& call) {
  for (int kind = 0; kind < kKinds; ++kind) {
    if (serviceOf(static_cast<Kind>(kind)) != call.service) continue;
    for (size_t i = 0; i < mNext[static_cast<size_t>(kind)]; ++i) {
      Account& account = mAccounts[static_cast<size_t>(kind)][i];
      if (account.state != State::Open || account.registered > call.start) continue;
      if (call.inside) {
        over(account, "disabled inside a callback");
        continue;
      }
      if (account.running > 0) {
        mistake("%s %zu still runs after disable has returned%s", nameOf(static_cast<Kind>(kind)),
                i,
                besideADisable(mServices[call.service], account)
                    ? " (registered beside another disable)"
                    : "");
      }
      account.state = State::Closed;
      ++mTotals.closed;
    }
  }
}

// Whether another disable was under way while @p account was registered.
bool ModelBooks::besideADisable(const ServiceBook& book, const Account& account) const {
  for (const uint64_t start : book.disabling) {
    if (start < account.registered) return true;
  }
  for (const auto& [start, end] : book.disables) {
    if (start < account.registered && end > account.opened) return true;
  }
  return false;
}

void ModelBooks::beginCallback(Kind kind, int number, int value, uint64_t connection,
                               bool insideCall) {
  mHistory.add("%s %d begins, value %d, connection %llu", nameOf(kind), number, value,
               static_cast<unsigned long long>(connection));
  const Guard lock(mMutex);
  Account& account = at(kind, number);
  ++mClock;
  ++mTotals.callbacks;
  ++mRunning;
  ++mCallbacks[serviceOf(kind)];
  ++account.calls;
  ++account.running;
  if (account.state == State::Free) mistake("%s %d: no registration", nameOf(kind), number);
  if (account.state == State::Closed) {
    mistake("%s %d called after disable had returned", nameOf(kind), number);
  }
  if (account.state == State::Refused) {
    mistake("%s %d: the function of a refused call was called", nameOf(kind), number);
  }
  if (account.overBy != nullptr) {
    auto& threads = account.begunAfter;
    const int thread = ModelHistory::thread();
    if (std::find(threads.begin(), threads.end(), thread) != threads.end()) {
      mistake("%s %d: called more than once, although %s", nameOf(kind), number, account.overBy);
    }
    threads.push_back(thread);
  }
  if (kind == kLceCriteria && account.calls > 1) mistake("LceCriteria %d answered twice", number);
  if (!mHarm && tellsOfLoss(kind, value, insideCall)) {
    mistake("%s %d: status %d for nothing", nameOf(kind), number, value);
  }
  if (connection != 0 && connection < mConnections.size()) {
    for (const auto& [start, end] : mServices[serviceOf(kind)].disables) {
      if (start > mConnections[connection] && end < account.opened) {
        mistake("%s %d: called by connection %llu of an earlier period", nameOf(kind), number,
                static_cast<unsigned long long>(connection));
      }
    }
  }
  mChanged.notify_all();
}

void ModelBooks::endCallback(Kind kind, int number) {
  mHistory.add("%s %d ends", nameOf(kind), number);
  const Guard lock(mMutex);
  ++mClock;
  --mRunning;
  --at(kind, number).running;
  mServices[serviceOf(kind)].lastCallback = Clock::now();
  mChanged.notify_all();
}

void ModelBooks::linger(Kind kind, int number, milliseconds atMost) {
  std::unique_lock<std::mutex> lock(mMutex);
  const Account& account = at(kind, number);
  mChanged.wait_for(lock, atMost,
                    [&] { return account.state == State::Closed || mMistaken.load(); });
}

uint64_t ModelBooks::callbacks(Service service) const {
  const Guard lock(mMutex);
  return mCallbacks[service];
}

bool ModelBooks::awaitCallback(Service service, uint64_t before, milliseconds atMost) {
  std::unique_lock<std::mutex> lock(mMutex);
  return mChanged.wait_for(lock, atMost, [&] { return mCallbacks[service] > before; });
}

void ModelBooks::awaitProgress(uint64_t events, milliseconds atMost) {
  std::unique_lock<std::mutex> lock(mMutex);
  const uint64_t wanted = mClock + events;
  mChanged.wait_for(lock, atMost, [&] { return mClock >= wanted; });
}

bool ModelBooks::awaitSilence(milliseconds atMost) {
  std::unique_lock<std::mutex> lock(mMutex);
  return mChanged.wait_for(lock, atMost, [&] { return mRunning == 0; });
}

void ModelBooks::connectionStands(uint64_t connection) {
  const Guard lock(mMutex);
  if (mConnections.size() <= connection) mConnections.resize(connection + 1, UINT64_MAX);
  mConnections[connection] = ++mClock;
}

uint32_t ModelBooks::tag() {
  const Guard lock(mMutex);
  mTags.push_back({++mClock, UINT64_MAX, false, false});
  return static_cast<uint32_t>(mTags.size());
}

void ModelBooks::tagged(uint32_t number, const Call& call, bool accepted) {
  const Guard lock(mMutex);
  Tag& tag = mTags[number - 1];
  tag.end = mClock;
  tag.refused = !accepted;
  if (tag.refused && tag.arrived) {
    mistake("%s: request %u was refused, but sent", nameOf(call.service), number);
  }
}

// Requests arrive in order: a call that ended before another one began arrives first.
void ModelBooks::arrived(uint32_t number, uint64_t& latestStart) {
  const Guard lock(mMutex);
  if (number == 0 || number > mTags.size()) return mistake("request %u was never made", number);
  Tag& tag = mTags[number - 1];
  if (tag.arrived) mistake("request %u came twice", number);
  if (tag.refused) mistake("request %u was refused, but sent", number);
  if (tag.end < latestStart) mistake("request %u came after a later one", number);
  tag.arrived = true;
  latestStart = std::max(latestStart, tag.start);
}

uint64_t ModelBooks::accepted(What what, Service service) const {
  const Guard lock(mMutex);
  return mServices[service].accepted[static_cast<size_t>(what)];
}

void ModelBooks::mistake(const char* format, ...) {
  char text[200];
  va_list arguments;
  va_start(arguments, format);
  vsnprintf(text, sizeof(text), format, arguments);
  va_end(arguments);
  mHistory.add("MISTAKE: %s", text);
  const Guard lock(mMistakeMutex);
  mMistakes.emplace_back(text);
  mMistaken = true;
}

std::vector<std::string> ModelBooks::mistakes() const {
  const Guard lock(mMistakeMutex);
  return mMistakes;
}

ModelBooks::Totals ModelBooks::totals() const {
  const Guard lock(mMutex);
  return mTotals;
}

}  // namespace torture
