// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <cstdint>

// A frame whose payload cannot be allocated ends the process, as documented ("malloc failed", exit
// status -1); the tests of the receiver show that. For a fuzzer, every second input would be a
// crash because of that, and a length of some gigabytes would use up its memory. So the program's
// recv lowers the length in each header that the library reads to this limit. No input has so many
// bytes, so a frame that announces more than comes still does so.
constexpr uint64_t kLargestPayload = uint64_t{1} << 20;
