// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
// An application that uses all services and changes its environment all the time, with the
// platform's stand-ins, which take every record. Some C libraries read the environment for every
// local time. With these, it changes the environment only while no service is enabled, as sdl.h
// demands. Argument: the number of changes. Ends with kExpected, or with 1 if a call was refused.
#include <unistd.h>

#include <atomic>
#include <cstdlib>
#include <ctime>
#include <string>
#include <thread>

#include "CountedCalls.h"

using namespace torture;
using process_end::Traffic;

namespace {

// The environment grows, so that the C library moves it in memory, and shrinks again.
void change(int round) {
  constexpr int kVariables = 200;
  for (int i = 0; i < kVariables; ++i) {
    setenv(("STORM_" + std::to_string(i)).c_str(), std::to_string(round).c_str(), 1);
  }
  for (int i = 0; i < kVariables; ++i) unsetenv(("STORM_" + std::to_string(i)).c_str());
}

// Whether a change of TZ takes effect without tzset().
bool localTimeReadsEnvironment() {
  const time_t noon = 43200;
  tm local = {};
  setenv("TZ", "UTC0", 1);
  tzset();
  localtime_r(&noon, &local);
  setenv("TZ", "AAA-1", 1);
  localtime_r(&noon, &local);
  return local.tm_hour != 12;
}

bool useServices() {
  const bool enabled = enableEach() && askForReports();
  process_end::awaitTraffic();
  return disableEach() && enabled;
}

}  // namespace

int main(int argc, char** argv) {
  const int rounds = argc > 1 ? atoi(argv[1]) : 1;
  alarm(process_end::kAlarmSeconds);
  // The first enable sets the log up, which reads the environment.
  bool good = useServices();
  if (localTimeReadsEnvironment()) {
    constexpr int kAtATime = 100;
    for (int round = 0; round < rounds; good = useServices() && good) {
      for (int i = 0; i < kAtATime; ++i) change(round++);
    }
    return good ? process_end::kExpected : 1;
  }
  std::atomic<bool> done{false};
  std::thread storm([&done, rounds] {
    for (int round = 0; round < rounds; ++round) change(round);
    done = true;
  });
  while (!done) good = useServices() && good;
  storm.join();
  return good ? process_end::kExpected : 1;
}
