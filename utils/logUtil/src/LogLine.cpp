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
  static_assert(LogHead::kMaxSize < kBufferSize, "a line has room for every head");
  mSize = head.copyTo(mText);
  appendText(format, args);
}

LogLine::LogLine(const char* tag, const char* file, const char* function, int line,
                 const char* format, va_list args) {
  appendHead(tag, file, function, line);
  appendText(format, args);
}

void LogLine::appendText(const char* format, va_list args) {
  const size_t head = mSize;
  const bool cut = mCut;
  va_list simple;
  va_copy(simple, args);
  const bool done = appendSimple(format, simple);
  va_end(simple);
  if (done) return;
  mSize = head;
  mCut = cut;
  const size_t room = kBufferSize - mSize;
  const int wanted = std::vsnprintf(mText + mSize, room, format, args);
  if (wanted < 0) {
    mText[mSize] = '\0';
    return;
  }
  mCut = mCut || static_cast<size_t>(wanted) >= room;
  mSize += std::min(static_cast<size_t>(wanted), room - 1);
}

bool LogLine::appendSimple(const char* format, va_list args) {
  while (const char* const percent = std::strchr(format, '%')) {
    append({format, static_cast<size_t>(percent - format)});
    const bool isLong = percent[1] == 'l';
    const char* const conversion = percent + (isLong ? 2 : 1);
    format = conversion + 1;
    if (*conversion == 'd') {
      appendNumber(isLong ? va_arg(args, long) : va_arg(args, int));
    } else if (*conversion == 'u' || *conversion == 'x') {
      appendNumber(isLong ? va_arg(args, unsigned long) : va_arg(args, unsigned),
                   *conversion == 'u' ? 10 : 16);
    } else if (*conversion == 's' && !isLong) {
      const char* const text = va_arg(args, const char*);
      if (text == nullptr) return false;
      append(text);
    } else if (*conversion == '%' && !isLong) {
      append("%");
    } else {
      return false;
    }
  }
  append(format);
  return true;
}

template <class Number>
void LogLine::appendNumber(Number number, int base) {
  char digits[24];
  const std::to_chars_result end = std::to_chars(digits, digits + sizeof digits, number, base);
  append({digits, static_cast<size_t>(end.ptr - digits)});
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
  append("|");
  append(viewOf(tag));
  append("|");
  append(baseName(file));
  append("::");
  append(viewOf(function));
  append(":");
  appendNumber(line);
  append(" ");
}

void LogLine::append(std::string_view part) {
  const size_t size = std::min(part.size(), kBufferSize - 1 - mSize);
  mCut = mCut || size < part.size();
  std::memcpy(mText + mSize, part.data(), size);
  mSize += size;
  mText[mSize] = '\0';
}
