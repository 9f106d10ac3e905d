// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

#include "orbsim/HandoffModel.h"

#include <algorithm>
#include <iterator>

namespace orbsim {
namespace {

// The technologies that the played device roams between.
constexpr LliProto::LliRatType kRats[] = {LliProto::LLI_3GPP_LTE,    LliProto::LLI_3GPP_5G,
                                          LliProto::LLI_3GPP_WCDMA,  LliProto::LLI_3GPP_WLAN,
                                          LliProto::LLI_3GPP_CIWLAN, LliProto::LLI_3GPP2_EHRPD};

}  // namespace

std::optional<LliProto::LliIndResp> HandoffModel::next(uint64_t stepMs) {
  switch (mNext) {
    case Step::kEntry:
      if (mPause > 0) {
        --mPause;
        return std::nullopt;
      }
      enter(stepMs);
      return indication(LliProto::PRE_HANDOFF);
    case Step::kImminent:
      if (--mStepsLeft == 1) mNext = Step::kStart;
      return indication(LliProto::HANDOFF_IMMINENT);
    case Step::kStart:
      mStepsLeft = 0;
      mNext = Step::kOutcome;
      return indication(LliProto::HANDOFF_START);
    case Step::kOutcome:
      mSucceeded = mRandom.below(5) != 0;
      mDurationMs = 0;
      mNext = Step::kExit;
      return indication(mSucceeded ? LliProto::HANDOFF_SUCCESS : LliProto::HANDOFF_FAILURE);
    case Step::kExit:
      break;
  }
  mStepsLeft = mDurationMs = 0;  // also of one that was called off
  const LliProto::LliIndResp exit = indication(LliProto::PRE_HANDOFF, LliProto::EXIT);
  leave();
  return exit;
}

void HandoffModel::abandon() {
  mNext = Step::kEntry;
  mPause = 0;
}

void HandoffModel::enter(uint64_t stepMs) {
  mTarget = otherRat();
  mSucceeded = false;
  mStepMs = std::max<uint64_t>(stepMs, 1);
  mStepsLeft = 4 + mRandom.below(4);
  mDurationMs = 20 + mRandom.below(181);
  const bool calledOff = mRandom.below(6) == 0;
  mNext = calledOff ? Step::kExit : Step::kImminent;
}

void HandoffModel::leave() {
  if (mSucceeded) mSource = mTarget;
  mPause = 2 + mRandom.below(4);
  mNext = Step::kEntry;
}

// Neither where the device is nor what it tried last.
LliProto::LliRatType HandoffModel::otherRat() {
  for (;;) {
    const LliProto::LliRatType rat = kRats[mRandom.below(std::size(kRats))];
    if (rat != mSource && rat != mTarget) return rat;
  }
}

LliProto::LliIndResp HandoffModel::indication(LliProto::HandoffInfo info,
                                              LliProto::PreHandoffState state) const {
  LliProto::LliIndResp indication;
  indication.set_handoff_info(info);
  indication.set_pre_handoff_state(state);
  indication.set_source_rat(mSource);
  indication.set_target_rat(mTarget);
  indication.set_estimated_time_to_interruption(mStepsLeft * mStepMs);
  indication.set_estimated_interruption_duration(mDurationMs);
  return indication;
}

}  // namespace orbsim
