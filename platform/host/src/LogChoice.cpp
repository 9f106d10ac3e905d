// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "LogChoice.h"

#include <android/log.h>
#include <strings.h>

#include <cstring>

#include "Environment.h"

namespace host {

namespace {

constexpr struct {
  const char* name;
  int level;
} kLevels[] = {{"verbose", ANDROID_LOG_UNKNOWN},  // everything
               {"debug", ANDROID_LOG_DEBUG},     {"info", ANDROID_LOG_INFO},
               {"warning", ANDROID_LOG_WARN},    {"warn", ANDROID_LOG_WARN},
               {"error", ANDROID_LOG_ERROR},     {"fatal", ANDROID_LOG_FATAL},
               {"silent", ANDROID_LOG_SILENT}};

// Beginnings of the library's texts. The levels of these lines are fixed, but not useful for a
// person. Level error, but part of every run without faults.
constexpr const char* kUsual[] = {"handling OrbIpcIncomingRawMessage",
                                  "DEBUG: msgId: ", "Error 1st recv", "cannot open liborbalog.so",
                                  "public_key size "};
// Level debug: a call without a callback, before the service is enabled, or in a forked child.
constexpr const char* kMistakes[] = {"Status ind function null", "cb function null",
                                     "Cb function null", "Failed to get SDK ",
                                     "refused in a forked process"};

// The text behind "|tag|unit::function:line "; null for other lines.
const char* libraryText(const char* line) {
  const char* const blank = line[0] == '|' ? std::strchr(line, ' ') : nullptr;
  return blank != nullptr ? blank + 1 : nullptr;
}

template <size_t Size>
bool beginsWithOneOf(const char* const (&beginnings)[Size], const char* text) {
  for (const char* beginning : beginnings) {
    if (text != nullptr && std::strncmp(text, beginning, std::strlen(beginning)) == 0) return true;
  }
  return false;
}

}  // namespace

LogChoice LogChoice::ofEnvironment() {
  const LogChoice usual(ANDROID_LOG_DEBUG, false);
  const char* const wanted = variable("ORB_LOG_LEVEL");
  if (wanted == nullptr || wanted[0] == '\0') return usual;
  for (const auto& known : kLevels) {
    const bool letter = wanted[1] == '\0' && strncasecmp(wanted, known.name, 1) == 0;
    if (letter || strcasecmp(wanted, known.name) == 0) return LogChoice(known.level, true);
  }
  refuse("ORB_LOG_LEVEL", wanted,
         "no level; there are verbose, debug, info, warning, error, fatal and silent, and their "
         "first letters; warnings and errors are shown");
  return usual;
}

bool LogChoice::mayShow(int level) const { return level >= mLowest && level < ANDROID_LOG_SILENT; }

bool LogChoice::shows(int level, const char* text) const {
  if (mLevelAlone) return true;
  return level >= ANDROID_LOG_WARN ? !beginsWithOneOf(kUsual, libraryText(text))
                                   : beginsWithOneOf(kMistakes, libraryText(text));
}

}  // namespace host
