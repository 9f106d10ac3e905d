// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
// Stands for a device's liblog while the library is linked.
#include <android/log.h>

int __android_log_print(int prio, const char* tag, const char* fmt, ...) { return 0; }
