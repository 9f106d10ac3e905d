// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#define OPENSSL_SUPPRESS_DEPRECATED  // a random source of one's own is set as ever

#include "FixedProcess.h"

#include <openssl/evp.h>
#include <openssl/rand.h>
#include <sys/time.h>
#include <time.h>
#include <unistd.h>

#include <atomic>
#include <cstdlib>

#include "Interposed.h"

namespace {

constexpr time_t kSecond = 1748091727;  // 2025-05-24 13:02:07 UTC
constexpr suseconds_t kMicrosecond = 45999;

std::atomic<bool> clockStands{false};
unsigned libcryptoByte = 0;  // both are used under the log's lock, or on the test's thread
unsigned generatorByte = 0x80;

void count(unsigned& next, unsigned char* out, size_t size) {
  for (size_t i = 0; i < size; ++i) out[i] = static_cast<unsigned char>(next++);
}

int randomBytes(unsigned char* out, int size) {
  count(libcryptoByte, out, static_cast<size_t>(size));
  return 1;
}
int randomStatus() { return 1; }

}  // namespace

// By their names in the object file, because C libraries declare them differently.
extern "C" {
pid_t goldenPid() __asm__("getpid");
pid_t goldenPid() { return 1234; }

pid_t goldenTid() __asm__("gettid");
pid_t goldenTid() { return 1240; }

int goldenTime(timeval* time, void*) __asm__("gettimeofday");
int goldenTime(timeval* time, void*) {
  *time = {kSecond, kMicrosecond};
  return 0;
}

int goldenClock(clockid_t clock, timespec* time) __asm__("clock_gettime");
int goldenClock(clockid_t clock, timespec* time) {
  if (clock != CLOCK_MONOTONIC || !clockStands) return ORB_NEXT(clock_gettime)(clock, time);
  *time = {1000, 0};
  return 0;
}

int EVP_RAND_generate(EVP_RAND_CTX*, unsigned char* out, size_t size, unsigned, int,
                      const unsigned char*, size_t) {
  count(generatorByte, out, size);
  return 1;
}
}

namespace fixedprocess {

void begin() {
  setenv("TZ", "UTC0", 1);
  tzset();
}

StillClock::StillClock() { clockStands = true; }
StillClock::~StillClock() { clockStands = false; }

void beginRandom() {
  static const RAND_METHOD method = {nullptr, randomBytes, nullptr,
                                     nullptr, randomBytes, randomStatus};
  RAND_set_rand_method(&method);
  libcryptoByte = 0;
  generatorByte = 0x80;
}

}  // namespace fixedprocess
