// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
//
// The platform log on a desktop: "D/tag     ( pid): text" lines on standard error, one write per
// line so that lines of several threads and processes do not mix. Any thread may call it; what the
// environment says when the library is loaded holds for good.
//   ORB_LOG_LEVEL  lowest level shown, as a letter or a name: verbose, debug, info, warning, error,
//                  fatal, or silent for none. Without it all are shown.
//   NO_COLOR       no colour on a terminal.
#include <android/log.h>
#include <errno.h>
#include <strings.h>
#include <sys/uio.h>
#include <unistd.h>

#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <string>

#include "Environment.h"

namespace {

constexpr char kLetters[] = "??VDIWEFS";

constexpr struct {
  const char* name;
  int level;
} kLevels[] = {{"verbose", ANDROID_LOG_VERBOSE}, {"debug", ANDROID_LOG_DEBUG},
               {"info", ANDROID_LOG_INFO},       {"warning", ANDROID_LOG_WARN},
               {"warn", ANDROID_LOG_WARN},       {"error", ANDROID_LOG_ERROR},
               {"fatal", ANDROID_LOG_FATAL},     {"silent", ANDROID_LOG_SILENT}};

int readLowestLevel() {
  const char* const wanted = host::variable("ORB_LOG_LEVEL");
  if (wanted == nullptr || wanted[0] == '\0') return ANDROID_LOG_UNKNOWN;
  for (const auto& known : kLevels) {
    const bool letter = wanted[1] == '\0' && strncasecmp(wanted, known.name, 1) == 0;
    if (letter || strcasecmp(wanted, known.name) == 0) return known.level;
  }
  host::refuse("ORB_LOG_LEVEL", wanted,
               "no level; there are verbose, debug, info, warning, error, fatal and silent, and "
               "their first letters; everything is shown");
  return ANDROID_LOG_UNKNOWN;
}

bool readMayColor() {
  const char* const no = host::variable("NO_COLOR");
  return no == nullptr || no[0] == '\0';
}

const int lowestLevelShown = readLowestLevel();
const bool mayColor = readMayColor();

const char* colorOf(int level) {
  switch (level) {
    case ANDROID_LOG_INFO:
      return "\033[32m";
    case ANDROID_LOG_WARN:
      return "\033[33m";
    case ANDROID_LOG_ERROR:
    case ANDROID_LOG_FATAL:
      return "\033[31m";
    default:
      return "\033[36m";
  }
}

iovec piece(const char* text, size_t size) { return {const_cast<char*>(text), size}; }
iovec piece(const char* text) { return piece(text, std::strlen(text)); }

int writeLine(int prio, const char* tag, const char* text, size_t size) {
  char head[160];
  std::snprintf(head, sizeof head, "%c/%-8s(%5d): ", prio < 0 ? '?' : kLetters[prio],
                tag != nullptr ? tag : program_invocation_short_name, static_cast<int>(getpid()));
  const bool color = mayColor && isatty(STDERR_FILENO) == 1;
  const iovec pieces[] = {piece(color ? colorOf(prio) : ""), piece(head), piece(text, size),
                          piece(color ? "\033[0m\n" : "\n")};
  ssize_t written = -1;
  do {
    written = writev(STDERR_FILENO, pieces, 4);
  } while (written < 0 && errno == EINTR);
  return static_cast<int>(written);
}

}  // namespace

// Lines of usual length are made without the heap, so that a signal handler may log.
int __android_log_print(int prio, const char* tag, const char* fmt, ...) {
  if (prio < lowestLevelShown || prio >= ANDROID_LOG_SILENT) return 0;
  char text[1024] = "";
  va_list args;
  va_start(args, fmt);
  const int size = std::vsnprintf(text, sizeof text, fmt, args);
  va_end(args);
  if (size < static_cast<int>(sizeof text)) return writeLine(prio, tag, text, std::strlen(text));

  std::string longText(static_cast<size_t>(size), '\0');
  va_start(args, fmt);
  std::vsnprintf(longText.data(), longText.size() + 1, fmt, args);
  va_end(args);
  return writeLine(prio, tag, longText.data(), longText.size());
}
