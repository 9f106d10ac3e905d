// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

#pragma once

#include <cstdint>
#include <string>

#include "lle.pb.h"
#include "lli.pb.h"

namespace orbsim {

// The best rates and latencies of a radio technology. All values are constants.
struct Technology {
  struct Range {
    int64_t low;
    int64_t high;
  };

  LliProto::LliRatType rat;
  const char* word;
  LleProto::RatType latencyRat;  // its name in the latency service
  int64_t uplinkRate;            // kbit/s in a cell with good signal and no load
  int64_t downlinkRate;
  Range uplinkLatency;  // microseconds
  Range downlinkLatency;
};

// Every LliRatType has one.
const Technology& technologyOf(LliProto::LliRatType rat);
const Technology* technologyNamed(const std::string& word);

}  // namespace orbsim
