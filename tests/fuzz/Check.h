// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <cstdio>
#include <cstdlib>

// A rule that must hold whatever the input is. A broken one ends the process, which a fuzzer takes
// for a finding and keeps the input, and which fails a replay.
#define FUZZ_CHECK(condition)                                                                 \
  ((condition)                                                                                \
       ? static_cast<void>(0)                                                                 \
       : (std::fprintf(stderr, "%s:%d: does not hold: %s\n", __FILE__, __LINE__, #condition), \
          std::abort()))
