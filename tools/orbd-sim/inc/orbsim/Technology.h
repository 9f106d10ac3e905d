// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

#pragma once

#include <cstdint>
#include <string>

#include "lle.pb.h"
#include "lli.pb.h"

namespace orbsim {

// What a radio technology can do at best and how long it takes. Everything is a constant.
struct Technology {
  struct Range {
    int64_t low;
    int64_t high;
  };

  LliProto::LliRatType rat;
  const char* word;
  LleProto::RatType latencyRat;  // how the latency service names it
  int64_t uplinkRate;            // kbit/s in a good and empty cell
  int64_t downlinkRate;
  Range uplinkLatency;  // microseconds
  Range downlinkLatency;
};

// Every LliRatType has one.
const Technology& technologyOf(LliProto::LliRatType rat);
const Technology* technologyNamed(const std::string& word);

}  // namespace orbsim
