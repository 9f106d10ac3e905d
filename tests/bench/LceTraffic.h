// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include "orbsim/Daemon.h"

// What passes between an application that uses LCE and the daemon, as bytes made beforehand: the
// daemon costs as little as it can.
namespace lcetraffic {

constexpr uint32_t kSession = 1;  // of the daemon's first client

orbsim::Blob requestFrame();     // of lceGetLastEstimationReport()
orbsim::Blob answerFrame();      // to it
orbsim::Blob indicationFrame();  // a report that nobody has asked for

// The daemon answers each such request at once, and serves others as ever.
void answerAtOnce(orbsim::Daemon& daemon);

}  // namespace lcetraffic
