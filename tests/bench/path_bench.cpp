// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
//
// The whole path, through the C API of the shared library: from a request to the callback of its
// answer, and reports that the daemon sends without a request.
#include <orb/sdl.h>

#include <cstdio>

#include "BarePath.h"
#include "Comparison.h"
#include "LceFrames.h"
#include "orbsim/Daemon.h"

namespace {

constexpr int kRoundTrips = 2000;
constexpr int kBurst = 100;  // indications before a wait; a socket's buffer has space for more
constexpr int kIndications = 20000;

// What callbacks use. Never destroyed, because they may come while the process exits.
Countdown& answers() {
  static Countdown* const instance = new Countdown;
  return *instance;
}

void onStatus(status_e) { answers().one(); }
void onReport(LceEstimationReportStatus, LceEstimationReport) { answers().one(); }

bool enableLce() {
  answers().expect(1);
  if (orb_lce_enable(onStatus) != 1) return false;
  answers().wait();
  return lceRegEstimationReports(onReport) == 0;
}

// Sends in bursts and waits until each has arrived, so that neither side waits for space in a
// buffer.
template <class Send>
void inBursts(int count, Countdown& arrived, const Send& send) {
  for (int left = count; left > 0; left -= kBurst) {
    const int burst = left < kBurst ? left : kBurst;
    arrived.expect(burst);
    for (int i = 0; i < burst; ++i) send();
    arrived.wait();
  }
}

void compareRoundTrips(const Comparison& comparison) {
  BarePath bare(lceframes::request(), lceframes::answer("NONE"));
  const auto library = [](int count) {
    for (int i = 0; i < count; ++i) {
      answers().expect(1);
      lceGetLastEstimationReport(onReport);
      answers().wait();
    }
  };
  const auto baseline = [&](int count) {
    for (int i = 0; i < count; ++i) {
      bare.answers.expect(1);
      bare.request();
      bare.answers.wait();
    }
  };
  comparison.time("request to callback, round trip", kRoundTrips, library, baseline);
}

void compareIndications(const Comparison& comparison, orbsim::Daemon& daemon) {
  const orbsim::Blob bytes = lceframes::indication();
  BarePath bare(lceframes::request(), bytes);
  const auto library = [&](int count) {
    inBursts(count, answers(), [&] { daemon.sendBytes(lceframes::kFirstSession, bytes); });
  };
  const auto baseline = [&](int count) {
    inBursts(count, bare.answers, [&] { bare.indication(); });
  };
  comparison.rate("indications, socket to callback", kIndications, library, baseline);
}

}  // namespace

int main(int argc, char** argv) {
  const Comparison comparison(argc, argv);
  orbsim::Options options;
  options.record = false;
  orbsim::Daemon daemon(options);
  if (!daemon.start()) {
    std::fprintf(stderr, "path_bench: %s; run it in scripts/sandbox\n", daemon.error().c_str());
    return 1;
  }
  lceframes::answerAtOnce(daemon);
  if (!enableLce()) {
    std::fprintf(stderr, "path_bench: LCE cannot be enabled\n");
    return 1;
  }
  compareRoundTrips(comparison);
  compareIndications(comparison, daemon);
  const bool ended = orb_lce_disable() == 1;
  daemon.stop();
  return ended ? 0 : 1;
}
