// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

#pragma once

#include <cstdint>
#include <vector>

#include "lli.pb.h"
#include "orbsim/Model.h"
#include "orbsim/Random.h"

namespace orbsim {

// One phase of a handoff and its time, in milliseconds of the model's time.
struct HandoffPhase {
  int64_t at = 0;
  LliProto::LliIndResp indication;
};

// Plans handoffs between radio technologies, one after the other with a pause: entry into the
// pre-handoff phase, imminent for some steps, start, success or sometimes failure, exit. Some are
// called off: entry, exit. The time to the interruption counts down from the entry to 0 at the
// start. The interruption lasts exactly as long as announced. The same seed gives the same handoffs
// on every machine. Owned and used by one thread at a time.
class HandoffModel {
 public:
  explicit HandoffModel(uint64_t seed) : mRandom(seed) {}

  // The phases of the next handoff, in order. `stepMs` is the time between two phases.
  std::vector<HandoffPhase> plan(int64_t entry, int64_t stepMs, LliProto::LliRatType source);
  // The number of steps from the end of a handoff to the entry of the next one.
  uint32_t pause() { return 2 + mRandom.below(4); }

  static std::vector<HandoffPhase> ordered(int64_t entry, int64_t stepMs,
                                           LliProto::LliRatType source, const HandoffOrder& order);

 private:
  LliProto::LliRatType otherRat(LliProto::LliRatType source);

  Random mRandom;
  LliProto::LliRatType mTarget = LliProto::NULL_BEARER;  // target of the last attempt
};

}  // namespace orbsim
