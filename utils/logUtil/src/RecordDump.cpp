// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "RecordDump.h"

#include <new>
#include <utility>

#include "DiagCmdProcessor.h"

namespace {

constexpr std::chrono::milliseconds kExitPatience(200);

const char* requestName(DumpRequest::DumpRequestType type) {
  switch (type) {
    case DumpRequest::BUFFER_IS_FULL:
      return "BUFFER_IS_FULL";
    case DumpRequest::USER_COMMAND:
      return "USER_COMMAND";
    case DumpRequest::LOGGING_TIMER_EXPIRED:
      return "LOGGING_TIMER_EXPIRED";
    case DumpRequest::CRASH_DETECTED:
      return "CRASH_DETECTED";
    case DumpRequest::SHUTDOWN:
      return "SHUTDOWN";
  }
  return "UNKNOWN";
}

}  // namespace

void RecordDump::start() {
  dumpRequests.begin();
  const auto ended = std::make_shared<Semaphore>();
  dumperEnded = ended;
  auto dumperHandle = std::make_unique<Thread>();
  auto timerHandle = std::make_unique<Thread>();
  if (startThread(*dumperHandle, "orb-log-dump", ThreadWork::Library, [this, ended] {
        dumper();
        ended->increase();
      })) {
    dumperThread = std::move(dumperHandle);
  }
  if (startThread(*timerHandle, "orb-log-timer", ThreadWork::Library, [this] { timerLoop(); })) {
    timerThread = std::move(timerHandle);
  }
}

void RecordDump::stop(bool dumperWaits, bool exiting) {
  if (dumperThread != nullptr) addDumpRequest(SHUTDOWN);
  if (timerThread != nullptr) requestTimerStop();
  end(timerThread, true);
  const bool stuck = exiting && dumperThread != nullptr && !dumperEnded->decreaseFor(kExitPatience);
  end(dumperThread, !dumperWaits && !stuck);
}

void RecordDump::end(std::unique_ptr<Thread>& thread, bool waits) {
  if (thread == nullptr) return;
  if (waits && !thread->isHere()) {
    thread->join();
  } else {
    thread->detach();
  }
  thread.reset();
}

void RecordDump::queueRecord(const RecordStamp& stamp, std::string_view message) {
  try {
    records.push(stamp, message);
  } catch (const std::bad_alloc&) {
    // The record is dropped; its line is in the platform log.
  }
}

void RecordDump::requestDumpOnce() {
  try {
    dumpRequests.pushOnce(BUFFER_IS_FULL);
  } catch (const std::bad_alloc&) {
    // The next record asks again.
  }
}

void RecordDump::addDumpRequest(DumpRequestType type) {
  try {
    dumpRequests.push(type);
  } catch (const std::bad_alloc&) {
    // Other reasons to dump come again.
    if (type == SHUTDOWN) dumpRequests.end();
  }
}

void RecordDump::dumper() {
  DumpRequestType request = SHUTDOWN;
  while (dumpRequests.waitAndPop(request) && request != SHUTDOWN) dump(request);
}

void RecordDump::dump(DumpRequestType type) {
  using Clock = std::chrono::steady_clock;
  const Clock::time_point start = Clock::now();
  RecordStamp stamp;
  RecordQueue::Text text;
  std::string_view message;
  while (records.tryPop(stamp, text, message)) {
    if (!DiagCmdProcessor::isListening()) continue;
    char entry[LogLine::kBufferSize];
    const size_t size = stamp.formatEntry(message, entry);
    if (size > 0) DiagCmdProcessor::sendPacket({entry, size});
  }
  const auto elapsed = std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - start);
  completed(requestName(type), static_cast<int>(elapsed.count()));
}

void RecordDump::timerLoop() {
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

void RecordDump::requestTimerStop() {
  const LockGuard lock(timerMutex);
  stopRequests = stopLatched ? 1 : stopRequests + 1;
  timerWake.notify_all();
}

void RecordDump::latchStopRequests() {
  const LockGuard lock(timerMutex);
  stopLatched = true;
}
