// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

#include "orbsim/HandoffModel.h"

#include <algorithm>
#include <iterator>

#include "orbsim/Technology.h"

namespace orbsim {
namespace {

using Result = HandoffOrder::Result;

// The technologies of the modelled device.
constexpr LliProto::LliRatType kRats[] = {LliProto::LLI_3GPP_LTE,    LliProto::LLI_3GPP_5G,
                                          LliProto::LLI_3GPP_WCDMA,  LliProto::LLI_3GPP_WLAN,
                                          LliProto::LLI_3GPP_CIWLAN, LliProto::LLI_3GPP2_EHRPD};
// A minimum, even if the interval of reports is very short.
constexpr int64_t kMostImminent = 8;

struct Handoff {
  LliProto::LliRatType source;
  LliProto::LliRatType target;
  int64_t entry;
  int64_t stepMs;
  int64_t noticeMs;
  int64_t durationMs;
  Result result;
};

std::vector<HandoffPhase> phasesOf(const Handoff& handoff) {
  std::vector<HandoffPhase> phases;
  const auto add = [&](int64_t at, LliProto::HandoffInfo info, int64_t left, int64_t duration,
                       LliProto::PreHandoffState state = LliProto::ENTRY) {
    HandoffPhase phase;
    phase.at = at;
    phase.indication.set_handoff_info(info);
    phase.indication.set_pre_handoff_state(state);
    phase.indication.set_source_rat(handoff.source);
    phase.indication.set_target_rat(handoff.target);
    phase.indication.set_estimated_time_to_interruption(static_cast<uint64_t>(left));
    phase.indication.set_estimated_interruption_duration(static_cast<uint64_t>(duration));
    phases.push_back(phase);
  };
  const int64_t start = handoff.entry + handoff.noticeMs;
  const int64_t end = start + handoff.durationMs;
  add(handoff.entry, LliProto::PRE_HANDOFF, handoff.noticeMs, handoff.durationMs);
  if (handoff.result == Result::kCalledOff) {
    add(handoff.entry + std::min(handoff.stepMs, handoff.noticeMs), LliProto::PRE_HANDOFF, 0, 0,
        LliProto::EXIT);
    return phases;
  }
  for (int64_t at = handoff.entry + handoff.stepMs; at < start; at += handoff.stepMs) {
    add(at, LliProto::HANDOFF_IMMINENT, start - at, handoff.durationMs);
  }
  add(start, LliProto::HANDOFF_START, 0, handoff.durationMs);
  const bool succeeds = handoff.result == Result::kSuccess;
  add(end, succeeds ? LliProto::HANDOFF_SUCCESS : LliProto::HANDOFF_FAILURE, 0, 0);
  add(end + handoff.stepMs, LliProto::PRE_HANDOFF, 0, 0, LliProto::EXIT);
  return phases;
}

}  // namespace

std::vector<HandoffPhase> HandoffModel::plan(int64_t entry, int64_t stepMs,
                                             LliProto::LliRatType source) {
  Handoff handoff = {};
  handoff.source = source;
  handoff.target = mTarget = otherRat(source);
  handoff.entry = entry;
  handoff.stepMs = stepMs;
  handoff.noticeMs = (4 + static_cast<int64_t>(mRandom.below(4))) * stepMs;
  handoff.durationMs = 20 + static_cast<int64_t>(mRandom.below(181));
  if (mRandom.below(6) == 0) {
    handoff.result = Result::kCalledOff;
  } else {
    handoff.result = mRandom.below(5) != 0 ? Result::kSuccess : Result::kFailure;
  }
  return phasesOf(handoff);
}

std::vector<HandoffPhase> HandoffModel::ordered(int64_t entry, int64_t stepMs,
                                                LliProto::LliRatType source,
                                                const HandoffOrder& order) {
  const Technology* const target = technologyNamed(order.target);
  if (target == nullptr) return {};
  const int64_t notice = order.notice.count();
  const int64_t step = std::max<int64_t>({stepMs, notice / kMostImminent, 1});
  return phasesOf({source, target->rat, entry, step, notice, order.duration.count(), order.result});
}

// Not the current technology and not the last target.
LliProto::LliRatType HandoffModel::otherRat(LliProto::LliRatType source) {
  for (;;) {
    const LliProto::LliRatType rat = kRats[mRandom.below(std::size(kRats))];
    if (rat != source && rat != mTarget) return rat;
  }
}

}  // namespace orbsim
