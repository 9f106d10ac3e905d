// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
//
// The processor time of an application while the daemon is in a bad state, as a share of one core,
// with all services enabled, idle and with a request every 10 ms. For each figure this program
// starts a process, whose first argument is kMeasure.
#include <getopt.h>
#include <orb/sdl.h>
#include <poll.h>
#include <sys/timerfd.h>
#include <time.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <climits>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "BadDaemon.h"

namespace {

constexpr char kMeasure[] = "measure";
constexpr int kTicksPerSecond = 100;
const char kHelp[] =
    "Usage: states_bench [--seconds N] [--limit PERCENT]\n"
    "Print what an application costs while the daemon is in each of its bad states. To be run in\n"
    "scripts/sandbox; scripts/daemon-states does, and explains the table.\n";

struct Figure {
  double percent = 0;       // of one core
  unsigned long downs = 0;  // calls with "service down", of all services
};

// Counted by callbacks, which may come while the process exits.
std::atomic<unsigned long> downs{0};

void onStatus(status_e status) {
  if (status == STATUS_SERVICE_DOWN) ++downs;
}
void onLceReport(LceEstimationReportStatus, LceEstimationReport) {}
void onLleReport(int32_t, const LleEstimationReport*) {}
void onInterrupt(LliHandoffIndType, LliPreHandoffState, const LliInterruptInfo*) {}

bool enableAll() {
  return orb_lce_enable(onStatus) == 1 && orb_lle_enable(onStatus) == 1 &&
         orb_lli_enable(onStatus) == 1;
}

// Requests of the services in turn.
bool request(uint64_t number) {
  switch (number % 3) {
    case 0:
      return lceGetLastEstimationReport(onLceReport) == 0;
    case 1:
      return lleGetLastEstimationReport(onLleReport) == 0;
    default:
      return lliRegLinkInterruptInd(onInterrupt) == 0;
  }
}

double secondsOf(clockid_t clock) {
  timespec now = {};
  clock_gettime(clock, &now);
  return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

// The application: it wakes once at the end, or every 10 ms for a request.
bool spend(double seconds, bool requests) {
  const uint64_t ticks = requests ? static_cast<uint64_t>(seconds * kTicksPerSecond) : 1;
  const double interval = requests ? 1.0 / kTicksPerSecond : seconds;
  const auto whole = static_cast<time_t>(interval);
  const timespec period = {whole, static_cast<long>((interval - static_cast<double>(whole)) * 1e9)};
  const itimerspec times = {period, period};
  const int timer = timerfd_create(CLOCK_MONOTONIC, TFD_CLOEXEC);
  bool good = timer >= 0 && timerfd_settime(timer, 0, &times, nullptr) == 0;
  for (uint64_t done = 0; good && done < ticks;) {
    uint64_t due = 0;
    good = read(timer, &due, sizeof due) == sizeof due;
    for (; good && due > 0; --due, ++done) good = !requests || request(done);
  }
  close(timer);
  return good;
}

// Measures one state and prints the figure for the process that started this one.
int measure(size_t state, bool requests, double seconds) {
  const BadDaemon daemon(kBadStates[state]);
  if (!daemon.ready()) return EXIT_FAILURE;
  if (!enableAll() || !daemon.waitForConnections()) {
    std::fprintf(stderr, "states_bench: no such state: %s\n", kBadStates[state].name);
    return EXIT_FAILURE;
  }
  const double wall = secondsOf(CLOCK_MONOTONIC);
  const double processor = secondsOf(CLOCK_PROCESS_CPUTIME_ID);
  if (!spend(seconds, requests)) {
    std::fprintf(stderr, "states_bench: a request was refused\n");
    return EXIT_FAILURE;
  }
  const double used = secondsOf(CLOCK_PROCESS_CPUTIME_ID) - processor;
  const double passed = secondsOf(CLOCK_MONOTONIC) - wall;
  std::printf("%f %lu\n", 100 * used / passed, downs.load());
  const bool ended = orb_lce_disable() == 1 && orb_lle_disable() == 1 && orb_lli_disable() == 1;
  return ended ? EXIT_SUCCESS : EXIT_FAILURE;
}

bool figureOf(size_t state, bool requests, double seconds, Figure& figure) {
  std::array<char, PATH_MAX> self = {};
  if (readlink("/proc/self/exe", self.data(), self.size() - 1) <= 0) return false;
  std::array<char, PATH_MAX + 64> command;
  std::snprintf(command.data(), command.size(), "'%s' %s %zu %d %f", self.data(), kMeasure, state,
                requests ? 1 : 0, seconds);
  FILE* const output = popen(command.data(), "re");
  if (output == nullptr) return false;
  const bool read = std::fscanf(output, "%lf %lu", &figure.percent, &figure.downs) == 2;
  return pclose(output) == 0 && read;
}

int printTable(double seconds, double limit) {
  std::printf("%-28s %9s %6s %18s %6s\n", "daemon", "idle", "downs", "request per 10 ms", "downs");
  std::string above;
  for (size_t state = 0; state < kBadStates.size(); ++state) {
    const char* const name = kBadStates[state].name;
    Figure idle;
    Figure busy;
    if (!figureOf(state, false, seconds, idle) || !figureOf(state, true, seconds, busy)) {
      std::fprintf(stderr, "states_bench: cannot be measured: %s\n", name);
      return EXIT_FAILURE;
    }
    std::printf("%-28s %7.2f %% %6lu %16.2f %% %6lu\n", name, idle.percent, idle.downs,
                busy.percent, busy.downs);
    std::fflush(stdout);
    if (idle.percent > limit || busy.percent > limit) above += std::string("; ") + name;
  }
  if (above.empty()) return EXIT_SUCCESS;
  std::fprintf(stderr, "states_bench: above %g %%: %s\n", limit, above.c_str() + 2);
  return EXIT_FAILURE;
}

bool parsePositive(const char* text, double& value) {
  char* end = nullptr;
  value = std::strtod(text, &end);
  return end != text && *end == '\0' && value > 0 && value <= 86400;
}

}  // namespace

int main(int argc, char** argv) {
  double seconds = 10;
  double limit = 3;
  if (argc == 5 && std::strcmp(argv[1], kMeasure) == 0) {
    const size_t state = std::strtoul(argv[2], nullptr, 10);
    if (state >= kBadStates.size() || !parsePositive(argv[4], seconds)) return 2;
    return measure(state, std::strcmp(argv[3], "1") == 0, seconds);
  }
  static const option kOptions[] = {{"seconds", required_argument, nullptr, 's'},
                                    {"limit", required_argument, nullptr, 'l'},
                                    {"help", no_argument, nullptr, 'h'},
                                    {nullptr, 0, nullptr, 0}};
  for (int choice = 0; (choice = getopt_long(argc, argv, "s:l:h", kOptions, nullptr)) != -1;) {
    if (choice == 'h') {
      std::printf("%s", kHelp);
      return EXIT_SUCCESS;
    }
    if (choice == '?') return 2;
    if (!parsePositive(optarg, choice == 's' ? seconds : limit)) {
      std::fprintf(stderr, "states_bench: not a number: %s\n", optarg);
      return 2;
    }
  }
  return printTable(seconds, limit);
}
