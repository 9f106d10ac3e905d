// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
//
// The resident memory of an application, in KiB: before its first call, and after one, two and
// three services have got answers. The daemon is a separate process.
#include <orb/sdl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>

#include "Countdown.h"
#include "GrowthDaemon.h"

namespace {

constexpr int kRequests = 100;

// What callbacks use. Never destroyed, because they may come while the process exits.
Countdown& answers() {
  static Countdown* const instance = new Countdown;
  return *instance;
}

void onStatus(status_e) { answers().one(); }
void onLceReport(LceEstimationReportStatus, LceEstimationReport) { answers().one(); }
void onLleReport(int32_t, const LleEstimationReport*) { answers().one(); }
void onInterrupt(LliHandoffIndType, LliPreHandoffState, const LliInterruptInfo*) {
  answers().one();
}

long kibibytesOf(const std::string& what) {
  std::ifstream status("/proc/self/status");
  for (std::string line; std::getline(status, line);) {
    if (line.compare(0, what.size(), what) == 0) return std::atol(line.c_str() + what.size());
  }
  return 0;
}

void print(int services) {
  std::printf("resident,%d,%ld,\n", services, kibibytesOf("VmRSS:"));
  std::printf("resident_own,%d,%ld,\n", services, kibibytesOf("RssAnon:"));
}

template <class Enable, class Request>
bool use(Enable enable, Request request) {
  answers().expect(1);
  if (enable(onStatus) != 1) return false;
  answers().wait();
  for (int i = 0; i < kRequests; ++i) {
    answers().expect(1);
    if (request() != 0) return false;
    answers().wait();
  }
  return true;
}

bool measure() {
  print(0);
  if (!use(orb_lce_enable, [] { return lceGetLastEstimationReport(onLceReport); })) return false;
  print(1);
  if (!use(orb_lle_enable, [] { return lleGetLastEstimationReport(onLleReport); })) return false;
  print(2);
  if (!use(orb_lli_enable, [] { return lliRegLinkInterruptInd(onInterrupt); })) return false;
  print(3);
  return orb_lce_disable() == 1 && orb_lle_disable() == 1 && orb_lli_disable() == 1;
}

// Waits until the other end of @p end is closed.
int serve(int ready, int end) {
  growth::Daemon daemon;
  char byte = 0;
  const bool started = daemon.start() && write(ready, &byte, 1) == 1;
  close(ready);
  return started && read(end, &byte, 1) == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}

}  // namespace

int main() {
  int ready[2], end[2];
  if (pipe(ready) != 0 || pipe(end) != 0) return EXIT_FAILURE;
  const pid_t daemon = fork();
  if (daemon < 0) return EXIT_FAILURE;
  if (daemon == 0) {
    close(end[1]);
    return serve(ready[1], end[0]);
  }
  close(ready[1]);
  char byte = 0;
  const bool measured = read(ready[0], &byte, 1) == 1 && measure();
  close(end[1]);
  waitpid(daemon, nullptr, 0);
  if (!measured) std::fprintf(stderr, "resident_bench: no answers; run it in scripts/sandbox\n");
  return measured ? EXIT_SUCCESS : EXIT_FAILURE;
}
