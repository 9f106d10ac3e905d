// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <cstddef>

// A platform, log hook included, whose log takes as much of its caller's stack as the sizes of the
// library's stacks allow for. In the middle of a line it does what the test wants. Any thread may
// log; the rest is for the test.
namespace deepplatform {

// What a call of the log takes, besides the formatting.
constexpr size_t kTaken = 4096;

// In every line, on its thread, from now on; null for nothing.
void setInLines(void (*action)());

}  // namespace deepplatform
