// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "ChaosTraffic.h"

#include <atomic>
#include <random>
#include <utility>

namespace torture {

namespace {

using Random = std::minstd_rand;
using Indices = std::make_integer_sequence<int, static_cast<int>(Accounts::kPerKind)>;

// How many calls enable, and how many disable, out of all; the others are requests.
constexpr uint32_t kCalls = 64;
constexpr uint32_t kEnables = 8;
constexpr uint32_t kDisables = 3;
// One callback in so many makes a call itself.
constexpr uint32_t kCallsInside = 16;
// One callback in so many lasts longer than disable waits for a thread to end.
constexpr uint32_t kLong = 64;
constexpr std::chrono::milliseconds kLingering(120);

Accounts& accounts() { return ChaosTraffic::accounts(); }

void step(Random& random, bool insideCallback);

// The body of every callback.
void inside(Kind kind, int account) {
  const uint64_t turn = accounts().begin(kind, account);
  static std::atomic<uint32_t> callbacks{0};
  thread_local Random random(++callbacks);
  thread_local bool nested = false;
  if (!nested && random() % kCallsInside == 0) {
    nested = true;
    step(random, true);
    nested = false;
  }
  if (random() % kLong == 0) accounts().linger(kind, account, kLingering);
  accounts().end(kind, account, turn);
}

template <Kind kKind, int kAccount>
void onStatus(status_e) {
  inside(kKind, kAccount);
}
template <Kind kKind, int kAccount>
void onStatusV2(status_v2_e) {
  inside(kKind, kAccount);
}
template <Kind kKind, int kAccount>
void onCriteria(LceReportingCriteriaStatus) {
  inside(kKind, kAccount);
}
template <Kind kKind, int kAccount>
void onLce(LceEstimationReportStatus, LceEstimationReport) {
  inside(kKind, kAccount);
}
template <Kind kKind, int kAccount>
void onLle(int32_t, const LleEstimationReport*) {
  inside(kKind, kAccount);
}
template <Kind kKind, int kAccount>
void onLli(LliHandoffIndType, LliPreHandoffState, const LliInterruptInfo*) {
  inside(kKind, kAccount);
}

// The functions of all accounts of one kind.
template <Kind kKind, int... kAccounts>
void (*statusOf(int account, std::integer_sequence<int, kAccounts...>))(status_e) {
  static constexpr void (*kAll[])(status_e) = {onStatus<kKind, kAccounts>...};
  return kAll[account];
}
template <Kind kKind, int... kAccounts>
void (*statusV2Of(int account, std::integer_sequence<int, kAccounts...>))(status_v2_e) {
  static constexpr void (*kAll[])(status_v2_e) = {onStatusV2<kKind, kAccounts>...};
  return kAll[account];
}
template <Kind kKind, int... kAccounts>
LceReportingCriteriaCb criteriaOf(int account, std::integer_sequence<int, kAccounts...>) {
  static constexpr LceReportingCriteriaCb kAll[] = {onCriteria<kKind, kAccounts>...};
  return kAll[account];
}
template <Kind kKind, int... kAccounts>
LceEstimationReportCb lceOf(int account, std::integer_sequence<int, kAccounts...>) {
  static constexpr LceEstimationReportCb kAll[] = {onLce<kKind, kAccounts>...};
  return kAll[account];
}
template <Kind kKind, int... kAccounts>
LleEstimationReportCb lleOf(int account, std::integer_sequence<int, kAccounts...>) {
  static constexpr LleEstimationReportCb kAll[] = {onLle<kKind, kAccounts>...};
  return kAll[account];
}
template <Kind kKind, int... kAccounts>
LliLinkInterruptIndCb lliOf(int account, std::integer_sequence<int, kAccounts...>) {
  static constexpr LliLinkInterruptIndCb kAll[] = {onLli<kKind, kAccounts>...};
  return kAll[account];
}

// Registers one callback and records that in the accounts.
template <class Call>
void registerOn(Kind kind, Call call) {
  const int account = accounts().open(kind);
  if (account >= 0) accounts().registered(kind, account, call(account));
}

void request(Service service, Random& random) {
  const Indices all;
  const auto dice = random() % 6;
  if (service == kLli) {
    registerOn(kLliInterrupt, [&](int account) {
      return lliRegLinkInterruptInd(lliOf<kLliInterrupt>(account, all)) == 0;
    });
  } else if (dice == 0) {
    // This request starts or stops reports.
    if (service == kLce) {
      lcePerformReportingAction(random() % 4 == 0 ? LCE_REPORTING_ACTION_STOP
                                                  : LCE_REPORTING_ACTION_START);
    } else {
      lleSetReportingCriteria(random() % 4 == 0 ? 0 : 1);
    }
  } else if (service == kLle && dice < 4) {
    registerOn(kLleLast, [&](int account) {
      return lleGetLastEstimationReport(lleOf<kLleLast>(account, all)) == 0;
    });
  } else if (service == kLle) {
    registerOn(kLleReport, [&](int account) {
      return lleRegEstimationReports(lleOf<kLleReport>(account, all)) == 0;
    });
  } else if (dice < 3) {
    registerOn(kLceCriteria, [&](int account) {
      return setCriteria(criteriaOf<kLceCriteria>(account, all)) > 0;
    });
  } else if (dice == 3) {
    registerOn(kLceLast, [&](int account) {
      return lceGetLastEstimationReport(lceOf<kLceLast>(account, all)) == 0;
    });
  } else {
    registerOn(kLceReport, [&](int account) {
      return lceRegEstimationReports(lceOf<kLceReport>(account, all)) == 0;
    });
  }
}

void step(Random& random, bool insideCallback) {
  const auto service = static_cast<Service>(random() % kServices);
  const bool second = random() % 2 == 0;
  const auto dice = random() % kCalls;
  if (dice < kEnables) {
    ChaosTraffic::enable(service, second);
  } else if (dice < kEnables + kDisables) {
    ChaosTraffic::disable(service, second, insideCallback);
  } else {
    request(service, random);
  }
}

}  // namespace

Accounts& ChaosTraffic::accounts() {
  static Accounts* const instance = new Accounts;
  return *instance;
}

void ChaosTraffic::enable(Service service, bool second) {
  const Indices all;
  switch (service) {
    case kLce:
      second ? registerOn(kLceStatusV2,
                          [&](int account) {
                            return createLceClient(statusV2Of<kLceStatusV2>(account, all)) == 0;
                          })
             : registerOn(kLceStatus, [&](int account) {
                 return orb_lce_enable(statusOf<kLceStatus>(account, all)) == 1;
               });
      break;
    case kLle:
      second ? registerOn(kLleStatusV2,
                          [&](int account) {
                            return createLleClient(statusV2Of<kLleStatusV2>(account, all)) == 0;
                          })
             : registerOn(kLleStatus, [&](int account) {
                 return orb_lle_enable(statusOf<kLleStatus>(account, all)) == 1;
               });
      break;
    default:
      second ? registerOn(kLliStatusV2,
                          [&](int account) {
                            return createLliClient(statusV2Of<kLliStatusV2>(account, all)) == 0;
                          })
             : registerOn(kLliStatus, [&](int account) {
                 return orb_lli_enable(statusOf<kLliStatus>(account, all)) == 1;
               });
      break;
  }
}

bool ChaosTraffic::disable(Service service, bool second, bool insideCallback) {
  const uint64_t start = accounts().beginLeaving(service);
  const bool done = second ? destroy(service) == 0 : torture::disable(service) == 1;
  accounts().endLeaving(service, start, done, insideCallback);
  return done;
}

ChaosTraffic::ChaosTraffic(unsigned threads, uint64_t seed) {
  for (unsigned i = 0; i < threads; ++i) {
    mThreads.emplace_back([this, seed, i] { run(seed * 1009 + i + 1); });
  }
}

void ChaosTraffic::join() {
  {
    const std::lock_guard<std::mutex> lock(mMutex);
    mStop = true;
  }
  mChanged.notify_all();
  for (std::thread& thread : mThreads) thread.join();
  mThreads.clear();
}

void ChaosTraffic::run(uint64_t seed) {
  Random random(static_cast<Random::result_type>(seed));
  for (;;) {
    {
      std::unique_lock<std::mutex> lock(mMutex);
      mChanged.wait(lock, [this] { return mStop || mGranted > 0; });
      if (mStop) return;
      if (--mGranted == 0) mChanged.notify_all();
    }
    step(random, false);
  }
}

void ChaosTraffic::grant(uint64_t calls) {
  std::unique_lock<std::mutex> lock(mMutex);
  mTotal += calls;
  mGranted += calls;
  mChanged.notify_all();
  mChanged.wait(lock, [this] { return mGranted == 0; });
}

}  // namespace torture
