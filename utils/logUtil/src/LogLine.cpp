// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "LogLine.h"

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <cstring>
#include <stdexcept>

namespace {

std::string_view viewOf(const char* text) { return text != nullptr ? std::string_view(text) : ""; }

std::string_view baseName(const char* file) {
  if (file == nullptr) throw std::logic_error("log line without a source file");
  return LogHead::baseName(file);
}

}  // namespace

LogLine::LogLine(const LogHead& head, const char* format, va_list args) {
  append(head.text());
  appendText(format, args);
}

LogLine::LogLine(const char* tag, const char* file, const char* function, int line,
                 const char* format, va_list args) {
  appendHead(tag, file, function, line);
  appendText(format, args);
}

void LogLine::appendText(const char* format, va_list args) {
  if (std::strchr(format, '%') == nullptr) {
    append(format);
    return;
  }
  const size_t room = kBufferSize - mSize;
  const int wanted = std::vsnprintf(mText + mSize, room, format, args);
  if (wanted < 0) {
    mText[mSize] = '\0';
    return;
  }
  mCut = mCut || static_cast<size_t>(wanted) >= room;
  mSize += std::min(static_cast<size_t>(wanted), room - 1);
}

LogLine::LogLine(const char* tag, const char* file, const char* function, int line,
                 std::string_view text) {
  appendHead(tag, file, function, line);
  append(text);
}

void LogLine::dropSplitPercent() {
  if (!mCut) return;
  const std::string_view line = view();
  const size_t last = line.find_last_not_of('%');
  const size_t run = last == std::string_view::npos ? mSize : mSize - last - 1;
  if (run % 2 == 1) mText[--mSize] = '\0';
}

void LogLine::appendHead(const char* tag, const char* file, const char* function, int line) {
  char number[16];
  const std::to_chars_result end = std::to_chars(number, number + sizeof number, line);
  append("|");
  append(viewOf(tag));
  append("|");
  append(baseName(file));
  append("::");
  append(viewOf(function));
  append(":");
  append({number, static_cast<size_t>(end.ptr - number)});
  append(" ");
}

void LogLine::append(std::string_view part) {
  const size_t size = std::min(part.size(), kBufferSize - 1 - mSize);
  mCut = mCut || size < part.size();
  std::memcpy(mText + mSize, part.data(), size);
  mSize += size;
  mText[mSize] = '\0';
}
