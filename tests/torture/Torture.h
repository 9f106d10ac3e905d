// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <signal.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <random>
#include <string>

#include "ProcessState.h"

// What the torture tests share: the number of rounds, the watchdog that ends a run that hangs, and
// the count of the process's descriptors, threads and memory.
namespace torture {

// A number from the environment; scripts/torture sets them for the long runs.
inline uint64_t setting(const char* name, uint64_t otherwise) {
  const char* const text = getenv(name);
  return text != nullptr && *text != '\0' ? strtoull(text, nullptr, 10) : otherwise;
}
// The number of rounds of a test.
inline uint64_t countOr(uint64_t otherwise) { return setting("ORB_TORTURE_COUNT", otherwise); }

// Sanitizers keep freed memory and have their own threads.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool kChecked = true;
#else
constexpr bool kChecked = false;
#endif

// Ends the process with a message if a step takes longer than any step may. The signal goes to an
// application thread, because the library's threads block it. The time is counted in pieces, so a
// process that was stopped for a while is not taken for one that hangs.
class Watchdog {
 public:
  static void step(const char* format, ...) __attribute__((format(printf, 1, 2))) {
    static const bool installed = signal(SIGALRM, tick) != SIG_ERR;
    if (!installed) abort();
    va_list arguments;
    va_start(arguments, format);
    vsnprintf(sText, sizeof(sText), format, arguments);
    va_end(arguments);
    sPieces = 0;
    alarm(kPiece);
  }
  static void stop() { alarm(0); }

 private:
  static constexpr unsigned kPiece = 15;  // seconds
  static constexpr int kPieces = 6;

  static void say(const char* words) {
    if (write(STDERR_FILENO, words, strlen(words)) < 0) abort();
  }
  static void tick(int) {
    sPieces = sPieces + 1;
    alarm(kPiece);
    if (sPieces < kPieces) return;
    say("watchdog: no end of: ");
    say(sText);
    say("\n");
    abort();
  }
  static inline char sText[256];
  static inline std::atomic<int> sPieces{0};
};

using processstate::Census;
using processstate::comesBackTo;
using processstate::libraryThreadsEnd;
using processstate::residentBytes;

// The seed of a run's random choices. A test prints it; ORB_TORTURE_SEED repeats it.
inline uint64_t seedOfRun() {
  static const uint64_t seed = setting("ORB_TORTURE_SEED", std::random_device()());
  return seed;
}

}  // namespace torture
