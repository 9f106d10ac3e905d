// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
// Stands for a device's libcutils while the library is linked.
#include <cutils/properties.h>

int property_get(const char* key, char* value, const char* default_value) { return 0; }
int8_t property_get_bool(const char* key, int8_t default_value) { return default_value; }
