// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <android/log.h>

// A line straight to the platform's log, without a tag or the place that it comes from: what rooms
// log with that stand below the log or beside it. The level is the last word of its name, as in
// PLATFORM_LOG(DEBUG, "fd %d", fd).
#define PLATFORM_LOG(level, ...) __android_log_print(ANDROID_LOG_##level, nullptr, __VA_ARGS__)
