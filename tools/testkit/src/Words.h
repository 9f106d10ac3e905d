// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

#pragma once

#include <cstdint>
#include <map>
#include <string>

#include "orbsim/Frame.h"
#include "orbsim/Model.h"
#include "orbsim/testkit.h"

// Converts the test kit's plain values to words and orders of the daemon, and back.
namespace orbsim::testkit {

uint32_t typeOf(Service service);

// Whether a frame has a request of a service, and that request.
bool isRequest(const Frame& frame);
Request requestOf(const Frame& frame);

std::map<std::string, std::string> wordsFor(const Capacity& capacity);
std::map<std::string, std::string> wordsFor(const Latency& latency);
std::map<std::string, std::string> wordsFor(const HandoffPhase& phase);
HandoffOrder orderFor(const Handoff& handoff);

}  // namespace orbsim::testkit
