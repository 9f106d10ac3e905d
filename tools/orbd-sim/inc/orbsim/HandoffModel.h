// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

#pragma once

#include <cstdint>
#include <vector>

#include "lli.pb.h"
#include "orbsim/Model.h"
#include "orbsim/Random.h"

namespace orbsim {

// What is told of a handoff, and when: milliseconds of the model's time.
struct HandoffPhase {
  int64_t at = 0;
  LliProto::LliIndResp indication;
};

// Plans handoffs between radio technologies, one after the other with a pause between them: entry
// into the pre-handoff phase, imminent for some steps, start, success or now and then failure,
// exit. Some are called off: entry, exit. The time to the interruption counts down from the entry
// to 0 at the start; the interruption lasts exactly as long as it was told. The same seed gives the
// same handoffs on every machine. Owned and used by one thread at a time.
class HandoffModel {
 public:
  explicit HandoffModel(uint64_t seed) : mRandom(seed) {}

  // The phases of the next one, in order. `stepMs` is the time between two that are told.
  std::vector<HandoffPhase> plan(int64_t entry, int64_t stepMs, LliProto::LliRatType source);
  // Steps from the end of a handoff to the entry of the next one.
  uint32_t pause() { return 2 + mRandom.below(4); }

  static std::vector<HandoffPhase> ordered(int64_t entry, int64_t stepMs,
                                           LliProto::LliRatType source, const HandoffOrder& order);

 private:
  LliProto::LliRatType otherRat(LliProto::LliRatType source);

  Random mRandom;
  LliProto::LliRatType mTarget = LliProto::NULL_BEARER;  // that was tried last
};

}  // namespace orbsim
