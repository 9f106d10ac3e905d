// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "SdkLog.h"

#include <android/log.h>

#include <cstdarg>

#include "LogLine.h"

void SdkLog::print(int /* level */, const char* tag, const char* file, const char* function,
                   int line, const char* format, ...) {
  const ErrnoKeeper keeper;
  va_list args;
  va_start(args, format);
  LogLine text(tag, file, function, line, format, args);
  va_end(args);
  text.dropSplitPercent();
// The line is the format on purpose: log consumers rely on "%%" coming out as one '%'.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-security"
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
  __android_log_print(ANDROID_LOG_DEBUG, nullptr, text.text());
#pragma GCC diagnostic pop
}

std::string escapePercent(const std::string& text) {
  std::string escaped;
  escaped.reserve(text.size());
  for (const char c : text) escaped.append(c == '%' ? 2 : 1, c);
  return escaped;
}
