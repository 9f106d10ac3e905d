// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "Bytes.h"

#include <cstring>

void copyBytes(void* to, const void* from, size_t size) { std::memcpy(to, from, size); }

void zeroBytes(void* to, size_t size) { std::memset(to, 0, size); }
