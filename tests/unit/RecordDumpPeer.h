// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <gtest/gtest.h>

#include "RecordDump.h"

// Access of tests to a record dump: its timer's stop requests, and the requests in its queue.
struct RecordDumpPeer {
  static unsigned stopRequests(RecordDump& dump) {
    const LockGuard lock(dump.timerMutex);
    return dump.stopRequests;
  }
  static void requestTimerStop(RecordDump& dump) { dump.requestTimerStop(); }
  static void wakeTimer(RecordDump& dump) { dump.timerWake.notify_all(); }
  static RecordDump::DumpRequestType takeRequest(RecordDump& dump) {
    RecordDump::DumpRequestType request = RecordDump::SHUTDOWN;
    EXPECT_TRUE(dump.dumpRequests.tryPop(request));
    return request;
  }
};
