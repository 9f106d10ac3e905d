// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
//
// The part of the platform's libcutils that the library calls: system properties.
#pragma once

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

// Room for any value, the terminating zero included.
#define PROPERTY_VALUE_MAX 92

// Copies the value of `key` to `value` (PROPERTY_VALUE_MAX bytes) and returns its length. Without
// such a property the default is copied; a null default counts as empty.
int property_get(const char* key, char* value, const char* default_value);

// 1, y, yes, on and true are true; 0, n, no, off and false are false; all else gives the default.
int8_t property_get_bool(const char* key, int8_t default_value);

#ifdef __cplusplus
}
#endif
