// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

#pragma once

#include <cstdint>
#include <optional>

#include "lli.pb.h"
#include "orbsim/Random.h"

namespace orbsim {

// Plays handoffs between radio technologies, one after the other with a pause between them: entry
// into the pre-handoff phase, imminent for some steps, start, success or now and then failure,
// exit. Some are called off: entry, exit. The time to the interruption counts down from the entry
// to 0 at the start; how long the interruption will be is told until it is over. A handoff that
// succeeded is where the next one sets out from. The same seed gives the same handoffs on every
// machine. Owned and used by one thread.
class HandoffModel {
 public:
  explicit HandoffModel(uint64_t seed) : mRandom(seed) {}

  // The next step; nothing while there is a pause. `stepMs` is the time between two calls in
  // milliseconds; within a handoff it counts as it was at the entry.
  std::optional<LliProto::LliIndResp> next(uint64_t stepMs);
  // Forgets the handoff under way, and the pause: the next step is an entry.
  void abandon();

 private:
  enum class Step { kEntry, kImminent, kStart, kOutcome, kExit };

  void enter(uint64_t stepMs);
  void leave();
  LliProto::LliRatType otherRat();
  LliProto::LliIndResp indication(LliProto::HandoffInfo info,
                                  LliProto::PreHandoffState state = LliProto::ENTRY) const;

  Random mRandom;
  Step mNext = Step::kEntry;
  uint32_t mPause = 0;  // steps before the next entry
  LliProto::LliRatType mSource = LliProto::LLI_3GPP_LTE;
  LliProto::LliRatType mTarget = LliProto::NULL_BEARER;
  bool mSucceeded = false;
  uint64_t mStepMs = 1;
  uint64_t mStepsLeft = 0;  // until the interruption
  uint64_t mDurationMs = 0;
};

}  // namespace orbsim
