// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <atomic>
#include <chrono>
#include <cstddef>
#include <memory>
#include <string_view>

#include "DumpRequest.h"
#include "Mutex.h"
#include "RecordQueue.h"
#include "Semaphore.h"
#include "Thread.h"
#include "ThreadSafeQueue.h"

// The records that wait, and the two threads that write them to the diagnostic channel in batches:
// the dumper empties the queue at each request, the timer makes a request every 30 seconds. One
// object, owned by the log; it reports each dump to the function that it was made with, on the
// dumper's thread. Any thread adds records and requests at any time; start() and stop() are called
// by one thread at a time, for which the log provides. The queues have their own locks; timerMutex
// guards the timer's stop requests and is not held during a wait for a thread. Without memory a
// record or a request is dropped.
class RecordDump : public DumpRequest {
 public:
  // Told of each dump that is done, with its request's name.
  using Completed = void (*)(const char* request, int milliseconds);
  explicit RecordDump(Completed report) : completed(report) {}
  RecordDump(const RecordDump&) = delete;
  RecordDump& operator=(const RecordDump&) = delete;

  // If the system has no thread, the other one works alone, and records may have to wait.
  void start();
  // Ends both threads and waits for them. It does not wait for the calling thread, nor for the
  // dumper if that waits for the caller (@p dumperWaits). While the process ends (@p exiting), it
  // waits 200 ms for the dumper, which may never end then.
  void stop(bool dumperWaits, bool exiting);

  // Queues a record of this text.
  void queueRecord(const RecordStamp& stamp, std::string_view message);
  // Requests BUFFER_IS_FULL when 3000 records wait, unless such a request waits already: its dump
  // will take all records that are queued then.
  void requestDumpWhenFull() {
    if (records.size() >= kFullQueue) requestDumpOnce();
  }
  void addDumpRequest(DumpRequestType type);
  // Empties the record queue, as the dumper does. Its lock is held for one record at a time, so
  // writers go on meanwhile.
  void dump(DumpRequestType type);

  // What tests ask for and set.
  size_t queuedRecords() const { return records.size(); }
  size_t queuedRequests() const { return dumpRequests.size(); }
  bool hasDumper() const { return dumperThread != nullptr; }
  bool hasTimer() const { return timerThread != nullptr; }
  // From the timer's next period on.
  void setTimerInterval(std::chrono::milliseconds interval) { timerInterval = interval; }
  std::chrono::milliseconds getTimerInterval() const { return timerInterval; }
  // From now on several stop requests of the timer count as one.
  void latchStopRequests();

 private:
  friend struct RecordDumpPeer;  // tests of the timer's stop requests

  static constexpr size_t kFullQueue = 3000;

  void requestDumpOnce();
  void dumper();
  void timerLoop();
  void requestTimerStop();
  static void end(std::unique_ptr<Thread>& thread, bool waits);

  const Completed completed;
  RecordQueue records;
  ThreadSafeQueue<DumpRequestType> dumpRequests;

  // Of start() and stop().
  std::unique_ptr<Thread> dumperThread;
  std::unique_ptr<Thread> timerThread;
  std::shared_ptr<Semaphore> dumperEnded;  // of the present dumper

  Mutex timerMutex;
  Condition timerWake;
  unsigned stopRequests ORB_GUARDED_BY(timerMutex) = 0;
  bool stopLatched ORB_GUARDED_BY(timerMutex) = false;
  std::atomic<std::chrono::milliseconds> timerInterval{std::chrono::seconds(30)};
};
