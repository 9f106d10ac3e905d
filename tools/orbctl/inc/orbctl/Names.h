// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <orb/sdl.h>

#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "orbctl/Event.h"

// Names for the numbers of the API: in lines, JSON and CSV, and on the command line.
namespace orbctl {

template <class Value, size_t kCount>
using Words = std::array<std::pair<const char*, Value>, kCount>;

extern const Words<SdlAccessNetworkType, 4> kNetworkWords;
extern const Words<LceReportingAction, 3> kActionWords;
extern const Words<LliRat, 12> kRatWords;

const char* nameOf(Service service);                    // lce
const char* nameOf(status_e status);                    // SERVICE_DOWN
const char* nameOf(LceReportingCriteriaStatus status);  // TYPE_MISMATCH
const char* nameOf(LceEstimationReportStatus status);   // CRITERIA_NOT_SET
const char* nameOf(LceLinkDirection direction);         // uplink
const char* nameOf(SdlAccessNetworkType network);       // nr5g
const char* nameOf(LliRat rat);                         // 3gpp-lte
// entry, exit, imminent, start, success, failure
const char* phaseOf(const HandoffEvent& event);

// Short names for people: "LTE", "5G".
const char* shortNameOf(SdlAccessNetworkType network);
const char* shortNameOf(LliRat rat);

// The value of a name; case does not matter.
template <class Value, size_t kCount>
std::optional<Value> valueOf(const Words<Value, kCount>& words, std::string_view text);

}  // namespace orbctl
