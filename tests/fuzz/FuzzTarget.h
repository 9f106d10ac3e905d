// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <cstddef>
#include <cstdint>

// What every target defines, as libFuzzer wants it. A replay calls the same two for the files of
// the corpus. Inputs come one after another on one thread; a target leaves nothing behind that
// could change what the next input does.
extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv);
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);
