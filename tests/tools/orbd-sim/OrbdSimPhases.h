// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

// Phases of handoffs, for tests that check all of them.

#pragma once

#include <cstdint>
#include <vector>

#include "orbsim/Device.h"

namespace orbsimtest {

using orbsim::Device;
using orbsim::HandoffPhase;

inline std::vector<HandoffPhase> phasesOf(const Device& device, uint64_t from = 0) {
  std::vector<HandoffPhase> all;
  while (const HandoffPhase* const phase = device.phaseFrom(from)) {
    all.push_back(*phase);
    ++from;
  }
  return all;
}

inline std::vector<LliProto::HandoffInfo> infos(const std::vector<HandoffPhase>& phases) {
  std::vector<LliProto::HandoffInfo> all;
  for (const HandoffPhase& phase : phases) all.push_back(phase.indication.handoff_info());
  return all;
}

}  // namespace orbsimtest
