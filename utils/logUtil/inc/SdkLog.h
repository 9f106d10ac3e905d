// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <android/log.h>

#include <string>

#include "LogHead.h"

// Front end of the SDK layer: writes a line to the platform log and nowhere else. No state, no
// lock; may be called from any thread, and errno is left as it was.
//
// Lines go out at debug priority whatever the level, under the platform's default tag, and the
// finished line is itself the platform's format: a '%' that is still in it is interpreted there.
// Text that comes from outside the process therefore has to pass through escapePercent() first.
class SdkLog {
 public:
  static void print(int level, const char* tag, const char* file, const char* function, int line,
                    const char* format, ...) __attribute__((format(printf, 6, 7)));
  // The same with a head that is ready; what the macros call.
  static void print(const LogHead& head, const char* format, ...)
      __attribute__((format(printf, 2, 3)));
};

// Doubles every '%', so that the text comes out of SdkLog::print as it was, as far as a line shows
// it.
std::string escapePercent(const std::string& text);

// The usual call: level debug, position of the caller. SDK_LOG_AT is for lines whose number log
// consumers rely on; it takes the number instead of __LINE__. All but the text's values is
// constant.
#define SDK_LOG_AT(tag, line, ...) SDK_LOG_HEAD(tag, __FILE__, __func__, line, __VA_ARGS__)
#define SDK_LOG(tag, ...) SDK_LOG_AT(tag, __LINE__, __VA_ARGS__)
// For lines of a unit that is spread over files or helper functions: shown under the unit's own
// names.
#define SDK_LOG_AS(tag, file, function, ...) \
  SDK_LOG_HEAD(tag, file, function, __LINE__, __VA_ARGS__)
#define SDK_LOG_HEAD(tag, file, function, line, ...)             \
  do {                                                           \
    static constexpr LogHead logHead(tag, file, function, line); \
    SdkLog::print(logHead, __VA_ARGS__);                         \
  } while (0)
