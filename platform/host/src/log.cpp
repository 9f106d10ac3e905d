// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
//
// The platform log on a desktop: "13:02:07.045  1234  1240 D tag     : text" lines on standard
// error, with local time, process and thread; one write per line so that lines of several threads
// and processes do not mix. Any thread may call it; what the environment says when the library is
// loaded holds for good.
//   ORB_LOG_LEVEL  lowest level shown, as a letter or a name: verbose, debug, info, warning, error,
//                  fatal, or silent for none. Without it see LogChoice.h.
//   NO_COLOR       no colour on a terminal.
#include <android/log.h>
#include <errno.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <time.h>
#include <unistd.h>

#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <string>

#include "Environment.h"
#include "LogChoice.h"

namespace {

constexpr char kLetters[] = "??VDIWEFS";

bool readMayColor() {
  const char* const no = host::variable("NO_COLOR");
  return no == nullptr || no[0] == '\0';
}

// The difference between local time and UTC in seconds. Read once: the C library takes a lock for
// it, and a signal handler or a forked child could wait for that lock for ever.
long readZoneOffset() {
  const time_t now = time(nullptr);
  tm local = {};
  return localtime_r(&now, &local) != nullptr ? local.tm_gmtoff : 0;
}

const host::LogChoice choice = host::LogChoice::ofEnvironment();
const bool mayColor = readMayColor();
const long zoneOffset = readZoneOffset();

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

template <size_t Size>
void writeHead(char (&head)[Size], int prio, const char* tag) {
  timespec now = {};
  clock_gettime(CLOCK_REALTIME, &now);
  const int second = static_cast<int>((now.tv_sec + zoneOffset) % (24 * 60 * 60));
  std::snprintf(head, Size, "%02d:%02d:%02d.%03d %5d %5d %c %-8s: ", second / 3600,
                second / 60 % 60, second % 60, static_cast<int>(now.tv_nsec / 1000000),
                static_cast<int>(getpid()), static_cast<int>(syscall(SYS_gettid)), kLetters[prio],
                tag != nullptr ? tag : program_invocation_short_name);
}

int writeLine(int prio, const char* tag, const char* text, size_t size) {
  char head[160];
  writeHead(head, prio, tag);
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
  if (!choice.mayShow(prio)) return 0;
  char text[1024] = "";
  va_list args;
  va_start(args, fmt);
  const int size = std::vsnprintf(text, sizeof text, fmt, args);
  va_end(args);
  if (!choice.shows(prio, text)) return 0;
  if (size < static_cast<int>(sizeof text)) return writeLine(prio, tag, text, std::strlen(text));

  std::string longText(static_cast<size_t>(size), '\0');
  va_start(args, fmt);
  std::vsnprintf(longText.data(), longText.size() + 1, fmt, args);
  va_end(args);
  return writeLine(prio, tag, longText.data(), longText.size());
}
