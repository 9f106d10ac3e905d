// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <cstdint>

// A frame whose payload cannot be allocated ends the process, as it is documented ("malloc failed",
// exit status -1): the tests of the receiver prove that. To a fuzzer it would be a crash with every
// second input, and a length of some gigabytes one for want of memory. So the program's receive
// lowers the length in each header that the library reads to this, which is still more than any
// input has bytes: a frame that promises too much stays one.
constexpr uint64_t kLargestPayload = uint64_t{1} << 20;
