// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <cstddef>
#include <cstdint>

// Every target defines these two functions, which libFuzzer calls. A replay calls them for the
// files of the corpus. Inputs come one after the other on one thread. A target leaves no state that
// could change the run of the next input.
extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv);
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);
