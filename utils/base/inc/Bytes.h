// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <cstddef>

// Copying and clearing, always by the C library. A compiler that can tell that a size is at most a
// few hundred bytes may use a string instruction of the processor in its place; to start one takes
// longer than the library takes for a short text.
void copyBytes(void* to, const void* from, size_t size);
void zeroBytes(void* to, size_t size);
