// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <cstddef>

// Copying and clearing by calls: here the compiler does not see how small a size is. Where it does,
// it may use a string instruction of the processor; to start one takes longer than the C library
// takes for a short text.
void copyBytes(void* to, const void* from, size_t size);
void zeroBytes(void* to, size_t size);
