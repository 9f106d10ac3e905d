// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
//
// Single parts of the library: an item for the event loop, a timer, and one log line of each front
// end.
#include <android/log.h>
#include <unistd.h>

#include <cstdio>

#include "Comparison.h"
#include "Log.h"
#include "Loops.h"
#include "SdkLog.h"
#include "TimerWork.h"
#include "Timers.h"

namespace {

constexpr int kHandOvers = 2000;
constexpr int kBurst = 100;
constexpr int kPosts = 20000;
constexpr int kTimers = 100000;
constexpr int kRemovals = 20000;
constexpr int kLines = 100000;

// One thread posts numbers; the thread of the loop counts them.
template <class Loop>
void handOver(Loop& loop, int count, int burst) {
  for (int left = count; left > 0; left -= burst) {
    const int now = left < burst ? left : burst;
    loop.handled.expect(now);
    for (int i = 0; i < now; ++i) loop.post(i);
    loop.handled.wait();
  }
}

void compareHandOvers(const Comparison& comparison) {
  EventLoop loop;
  BareLoop bare;
  comparison.time(
      "post to handler, one at a time", kHandOvers, [&](int count) { handOver(loop, count, 1); },
      [&](int count) { handOver(bare, count, 1); });
  comparison.time(
      "post to handler, bursts of 100", kPosts, [&](int count) { handOver(loop, count, kBurst); },
      [&](int count) { handOver(bare, count, kBurst); });
}

void compareTimers(const Comparison& comparison) {
  TimerWork<ForwardTimer> timers;
  TimerWork<BareTimers> bare;
  comparison.time(
      "timer, added and run", kTimers, [&](int count) { timers.addAndRun(count); },
      [&](int count) { bare.addAndRun(count); });
  comparison.time(
      "timer, removed, another added", kRemovals, [&](int count) { timers.removeAndAdd(count); },
      [&](int count) { bare.removeAndAdd(count); });
}

// The same line, made by one call of the C library and passed to the platform.
void bareLine(int level, const char* tag, int value) {
  char text[512];
  std::snprintf(text, sizeof text, "|%s|%s::%s:%d value %d of %s", tag, "parts_bench", "bareLine",
                __LINE__, value, "many");
  __android_log_print(level, tag, "%s", text);
}

void compareLines(const Comparison& comparison) {
  const auto baseline = [](int count) {
    for (int i = 0; i < count; ++i) bareLine(ANDROID_LOG_DEBUG, "OrbSdk", i);
  };
  comparison.time(
      "SdkLog::print, one line", kLines,
      [](int count) {
        for (int i = 0; i < count; ++i) SDK_LOG("OrbSdk", "value %d of %s", i, "many");
      },
      baseline);
  comparison.time(
      "Log::addLogRecord, one line", kLines,
      [](int count) {
        for (int i = 0; i < count; ++i) ORB_LOGD("value %d of %s", i, "many");
      },
      baseline);
}

}  // namespace

int main(int argc, char** argv) {
  const Comparison comparison(argc, argv);
  compareHandOvers(comparison);
  compareTimers(comparison);
  compareLines(comparison);
  return 0;
}
