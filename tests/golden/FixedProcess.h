// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

// Fixes all values that differ between processes. This program's functions are used instead of
// those of the C library and libcrypto. The process is 1234, every thread is 1240, and the time is
// always 2025-05-24 13:02:07.045 UTC. Only for the test's thread, except those functions.
namespace fixedprocess {

// Sets the time zone.
void begin();
// While an object of this class exists, the steady clock also stands still.
class StillClock {
 public:
  StillClock();
  StillClock(const StillClock&) = delete;
  StillClock& operator=(const StillClock&) = delete;
  ~StillClock();
};
// From now on, random bytes are 0, 1, 2, ... from libcrypto's default generator, and 0x80, ... from
// a generator derived from it.
void beginRandom();

}  // namespace fixedprocess
