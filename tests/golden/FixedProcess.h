// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

// What differs from one process to the next, held still for the whole program: its functions come
// before the C library's and libcrypto's. Process 1234, thread 1240 whatever the thread, and in
// universal time it is always 2025-05-24 13:02:07.045. For the test's thread alone, but for those
// functions.
namespace fixedprocess {

// Sets the zone.
void begin();
// As long as one of these exists no time passes by the steady clock either.
class StillClock {
 public:
  StillClock();
  StillClock(const StillClock&) = delete;
  StillClock& operator=(const StillClock&) = delete;
  ~StillClock();
};
// Random bytes from now on: 0, 1, 2, ... where libcrypto's own generator is asked, and from 0x80 on
// where one that was made of it is.
void beginRandom();

}  // namespace fixedprocess
