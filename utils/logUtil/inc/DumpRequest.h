// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

// Why the records that wait are written out. No state: a base of the log, which takes the requests,
// and of the dump, which serves them, so that both have these names.
struct DumpRequest {
  enum DumpRequestType : int {
    BUFFER_IS_FULL = 0,
    USER_COMMAND = 1,
    LOGGING_TIMER_EXPIRED = 2,
    CRASH_DETECTED = 3,
    SHUTDOWN = 4,  // ends the dumper
  };
};
