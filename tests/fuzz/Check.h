// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <cstdio>
#include <cstdlib>

// A rule that must hold for every input. If it does not hold, the process ends. A fuzzer then keeps
// the input as a finding, and a replay fails.
#define FUZZ_CHECK(condition)                                                                 \
  ((condition)                                                                                \
       ? static_cast<void>(0)                                                                 \
       : (std::fprintf(stderr, "%s:%d: does not hold: %s\n", __FILE__, __LINE__, #condition), \
          std::abort()))
