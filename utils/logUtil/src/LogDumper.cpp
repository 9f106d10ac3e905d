// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
//
// The two threads of Log.
#include <android/log.h>

#include "DiagCmdProcessor.h"
#include "Log.h"

namespace {

// Log point: a line number that log consumers rely on.
constexpr int kDumpCompletedLine = 142;

const char* requestName(Log::DumpRequestType type) {
  switch (type) {
    case Log::BUFFER_IS_FULL:
      return "BUFFER_IS_FULL";
    case Log::USER_COMMAND:
      return "USER_COMMAND";
    case Log::LOGGING_TIMER_EXPIRED:
      return "LOGGING_TIMER_EXPIRED";
    case Log::CRASH_DETECTED:
      return "CRASH_DETECTED";
    case Log::SHUTDOWN:
      return "SHUTDOWN";
  }
  return "UNKNOWN";
}

}  // namespace

void Log::dumper() {
  DumpRequestType request = SHUTDOWN;
  while (dumpRequests.waitAndPop(request) && request != SHUTDOWN) dump(request);
}

// Empties the record queue. Its lock is held for one record at a time, so writers go on meanwhile.
void Log::dump(DumpRequestType type) {
  using Clock = std::chrono::steady_clock;
  const Clock::time_point start = Clock::now();
  std::shared_ptr<LogRecord> record;
  while (records.tryPop(record)) {
    char entry[LogLine::kBufferSize];
    const size_t size = record->formatEntry(record->message, entry);
    if (size > 0) DiagCmdProcessor::writeToDiag({entry, size});
  }
  const auto elapsed = std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - start);
  addLogRecord(ANDROID_LOG_DEBUG, "ORB", kSource, "dumper", kDumpCompletedLine,
               "Dump completed, request type: %s, elapsed time = %d ms", requestName(type),
               static_cast<int>(elapsed.count()));
}

void Log::timerLoop() {
  for (;;) {
    const auto deadline = std::chrono::system_clock::now() + timerInterval.load();
    std::cv_status status = std::cv_status::no_timeout;
    while (status == std::cv_status::no_timeout) {
      UniqueLock lock(timerMutex);
      if (stopRequests != 0) {
        --stopRequests;
        return;
      }
      status = timerWake.wait_until(lock, deadline);
    }
    addDumpRequest(LOGGING_TIMER_EXPIRED);
  }
}

void Log::requestTimerStop() {
  LockGuard lock(timerMutex);
  stopRequests = stopLatched ? 1 : stopRequests + 1;
  timerWake.notify_all();
}
