// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "SdkLog.h"

#include <android/log.h>

#include <cstdarg>
#include <string_view>

#include "LogLine.h"

namespace {

void write(LogLine& line) {
  line.dropSplitPercent();
// The line is the format on purpose: log consumers rely on "%%" coming out as one '%'.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-security"
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
  __android_log_print(ANDROID_LOG_DEBUG, nullptr, line.text());
#pragma GCC diagnostic pop
}

}  // namespace

void SdkLog::print(int /* level */, const char* tag, const char* file, const char* function,
                   int line, const char* format, ...) {
  const ErrnoKeeper keeper;
  va_list args;
  va_start(args, format);
  LogLine text(tag, file, function, line, format, args);
  va_end(args);
  write(text);
}

void SdkLog::print(const LogHead& head, const char* format, ...) {
  const ErrnoKeeper keeper;
  va_list args;
  va_start(args, format);
  LogLine text(head, format, args);
  va_end(args);
  write(text);
}

std::string escapePercent(const std::string& text) {
  // No line shows more of it, and printf would go through all of it, byte by byte.
  const std::string_view shown = std::string_view(text).substr(0, LogLine::kBufferSize);
  if (shown.find('%') == std::string_view::npos) return std::string(shown);
  std::string escaped;
  escaped.reserve(2 * shown.size());
  for (const char c : shown) escaped.append(c == '%' ? 2 : 1, c);
  return escaped;
}
