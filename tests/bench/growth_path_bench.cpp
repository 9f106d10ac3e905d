// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
//
// How the cost of the whole path grows, through the C API of the shared library with the daemon
// stand-in: with the size of an answer's payload, the number of services in the process, of threads
// that make requests, and of criteria that wait for an answer. The floor is the same bytes over
// socket pairs.
#include <orb/sdl.h>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "BarePath.h"
#include "Growth.h"
#include "GrowthDaemon.h"
#include "LceFrames.h"

namespace {

constexpr size_t kRequests = 400;
constexpr size_t kFewRequests = 40;  // with large payloads, which take long
constexpr size_t kLongPayload = 100000;

// What callbacks use. Never destroyed, because they may come while the process exits.
Countdown& answers() {
  static Countdown* const instance = new Countdown;
  return *instance;
}

void onStatus(status_e) { answers().one(); }
void onLceReport(LceEstimationReportStatus, LceEstimationReport) { answers().one(); }
void onCriteria(LceReportingCriteriaStatus) { answers().one(); }
void onLleReport(int32_t, const LleEstimationReport*) { answers().one(); }
void onInterrupt(LliHandoffIndType, LliPreHandoffState, const LliInterruptInfo*) {
  answers().one();
}

void check(bool good, const char* what) {
  if (good) return;
  std::fprintf(stderr, "growth_path_bench: %s\n", what);
  std::exit(EXIT_FAILURE);
}

orbsim::Blob answerOf(size_t payload) { return lceframes::answer(std::string(payload, 'x')); }

struct Service {
  int (*enable)(void (*)(status_e));
  int (*disable)();
  bool (*request)();
};
constexpr Service kServices[] = {
    {orb_lce_enable, orb_lce_disable, [] { return lceGetLastEstimationReport(onLceReport) == 0; }},
    {orb_lle_enable, orb_lle_disable, [] { return lleGetLastEstimationReport(onLleReport) == 0; }},
    {orb_lli_enable, orb_lli_disable, [] { return lliRegLinkInterruptInd(onInterrupt) == 0; }},
};

void enable(const Service& service) {
  answers().expect(1);
  check(service.enable(onStatus) == 1, "a service cannot be enabled");
  answers().wait();
}

double bareRoundTrips(std::vector<std::unique_ptr<BarePath>>& paths, size_t requests) {
  return Growth::costOfOne(requests * paths.size(), [&] {
    for (size_t i = 0; i < requests; ++i) {
      for (const auto& path : paths) {
        path->answers.expect(1);
        path->request();
      }
      for (const auto& path : paths) path->answers.wait();
    }
  });
}

double bareRoundTrips(size_t paths, const orbsim::Blob& answer, size_t requests) {
  std::vector<std::unique_ptr<BarePath>> bare;
  for (size_t i = 0; i < paths; ++i) {
    bare.push_back(std::make_unique<BarePath>(lceframes::request(), answer));
  }
  bareRoundTrips(bare, requests / 10 + 1);
  return bareRoundTrips(bare, requests);
}

// One request after the other, each to all of the first @p services.
double roundTrips(size_t services, size_t requests) {
  return Growth::costOfOne(requests * services, [&] {
    for (size_t i = 0; i < requests; ++i) {
      answers().expect(static_cast<int>(services));
      for (size_t s = 0; s < services; ++s) check(kServices[s].request(), "a request was refused");
      answers().wait();
    }
  });
}

size_t requestsOf(const Growth& growth, size_t payload) {
  return growth.operations(payload < kLongPayload ? kRequests : kFewRequests);
}

void growPayload(const Growth& growth, growth::Daemon& daemon) {
  growth.curve(
      "payload", 100, {0, 100, 10000, 100000, 1000000},
      [&](size_t payload) {
        daemon.setPayload(payload);
        roundTrips(1, growth.operations(10));
        const double cost = roundTrips(1, requestsOf(growth, payload));
        daemon.setPayload(0);
        return cost;
      },
      [&](size_t payload) {
        return bareRoundTrips(1, answerOf(payload), requestsOf(growth, payload));
      });
}

void growServices(const Growth& growth) {
  growth.curve(
      "services", 2, {1, 2, 3},
      [&](size_t services) {
        for (size_t s = 1; s < services; ++s) enable(kServices[s]);
        roundTrips(services, growth.operations(10));
        const double cost = roundTrips(services, growth.operations(kRequests));
        for (size_t s = 1; s < services; ++s) {
          check(kServices[s].disable() == 1, "a service cannot be disabled");
        }
        return cost;
      },
      [&](size_t services) {
        return bareRoundTrips(services, answerOf(0), growth.operations(kRequests));
      });
}

// All threads begin together. The measurement ends with the last answer.
template <class Request>
double fromThreads(size_t threads, size_t requestsOfEach, Countdown& arrived, Request request) {
  arrived.expect(static_cast<int>(threads * requestsOfEach));
  std::vector<std::thread> requesting;
  std::atomic<bool> begin{false};
  for (size_t t = 0; t < threads; ++t) {
    requesting.emplace_back([&] {
      while (!begin) std::this_thread::yield();
      for (size_t i = 0; i < requestsOfEach; ++i) request();
    });
  }
  return Growth::costOfOne(threads * requestsOfEach, [&] {
    begin = true;
    for (std::thread& thread : requesting) thread.join();
    arrived.wait();
  });
}

void growThreads(const Growth& growth) {
  const auto each = [&](size_t threads) { return growth.operations(4 * kRequests) / threads + 1; };
  growth.curve(
      "request_threads", 2, {1, 2, 4, 8, 16},
      [&](size_t threads) {
        return fromThreads(threads, each(threads), answers(),
                           [] { check(kServices[0].request(), "a request was refused"); });
      },
      [&](size_t threads) {
        BarePath bare(lceframes::request(), answerOf(0));
        return fromThreads(threads, each(threads), bare.answers, [&] { bare.request(); });
      });
}

// Criteria that the daemon does not answer, and some that it answers.
class Criteria {
 public:
  explicit Criteria(growth::Daemon& daemon) : mDaemon(daemon) {}

  void pend(size_t count) {
    if (count < mPending) startAnew();
    mDaemon.setAnswering(false);
    while (mPending < count) {
      const size_t some = std::min(count - mPending, kAtOnce);
      for (size_t i = 0; i < some; ++i) set();
      roundTrips(1, 1);  // waits until the daemon has got all of them
      mPending += some;
    }
    mDaemon.setAnswering(true);
  }
  double cost(size_t requests) {
    return Growth::costOfOne(requests, [&] {
      for (size_t i = 0; i < requests; ++i) {
        answers().expect(1);
        set();
        answers().wait();
      }
    });
  }
  void startAnew() {
    check(orb_lce_disable() == 1, "LCE cannot be disabled");
    enable(kServices[0]);
    mPending = 0;
  }

 private:
  static constexpr size_t kAtOnce = 1000;

  static void set() {
    LceReportingCriteria criteria = {};
    criteria.firstListCount = 1;
    check(lceSetReportingCriteria(&criteria, onCriteria) > 0, "criteria were refused");
  }

  growth::Daemon& mDaemon;
  size_t mPending = 0;
};

void growCriteria(const Growth& growth, growth::Daemon& daemon) {
  if (!growth.isWanted("criteria")) return;
  Criteria criteria(daemon);
  growth.curve(
      "criteria", 100, {1, 10, 100, 1000, 10000, 100000},
      [&](size_t pending) {
        criteria.pend(pending);
        criteria.cost(growth.operations(10));
        return criteria.cost(growth.operations(kRequests));
      },
      [&](size_t) { return bareRoundTrips(1, answerOf(0), growth.operations(kRequests)); });
  criteria.startAnew();
}

}  // namespace

int main(int argc, char** argv) {
  const Growth growth(argc, argv);
  growth::Daemon daemon;
  check(daemon.start(), "there is no daemon; run it in scripts/sandbox");
  enable(kServices[0]);
  growPayload(growth, daemon);
  growServices(growth);
  growThreads(growth);
  growCriteria(growth, daemon);
  check(orb_lce_disable() == 1, "LCE cannot be disabled");
  return EXIT_SUCCESS;
}
