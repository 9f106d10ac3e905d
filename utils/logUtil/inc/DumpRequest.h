// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

// Why the records that wait are written out. No state: a base that lends its names, so that they
// are those of the dump, which serves the requests, and those of the log, where requests are filed.
struct DumpRequest {
  enum DumpRequestType : int {
    BUFFER_IS_FULL = 0,
    USER_COMMAND = 1,
    LOGGING_TIMER_EXPIRED = 2,
    CRASH_DETECTED = 3,
    SHUTDOWN = 4,  // ends the dumper
  };
};
