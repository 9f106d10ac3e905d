// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <cstddef>

// A platform with a log hook. Its log uses as much of its caller's stack as the stack sizes of the
// library allow. In the middle of a line it runs an action of the test. Any thread may log; the
// other functions are for the test.
namespace deepplatform {

// The stack that a call of the log uses, without the formatting.
constexpr size_t kTaken = 4096;

// An action for every line from now on, on the logging thread; null for none.
void setInLines(void (*action)());

}  // namespace deepplatform
