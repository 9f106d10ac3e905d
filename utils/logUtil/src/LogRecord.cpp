// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "LogRecord.h"

#include <android/log.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstring>
#include <ctime>

#include "LogTag.h"
#include "Process.h"

namespace {

constexpr std::string_view kLevelLetters = "XXVDIWEF";
constexpr size_t kDateSize = 50;
constexpr char kZoneFile[] = "/etc/localtime";

char levelLetter(int level) {
  const size_t index = static_cast<size_t>(level);
  return index < kLevelLetters.size() ? kLevelLetters[index] : kLevelLetters[0];
}

// The file of the system's time zone as it is now, in a number that another file, or other
// contents, would not have. Never 0.
uint64_t zoneFile() {
  struct stat status = {};
  uint64_t mark = 1;
  if (stat(kZoneFile, &status) != 0) return mark;
  for (const auto part :
       {static_cast<uint64_t>(status.st_dev), static_cast<uint64_t>(status.st_ino),
        static_cast<uint64_t>(status.st_mtim.tv_sec),
        static_cast<uint64_t>(status.st_mtim.tv_nsec)}) {
    mark = (mark ^ part) * 0x9E3779B97F4A7C15u;
  }
  return mark | 1;
}

// Date and time of a second in local time, kept for the records that follow within it: the
// conversion costs more than the rest of the text. The time zone is looked at anew for every
// second.
struct Calendar {
  bool valid = false;
  time_t second = 0;
  char text[kDateSize] = "";
};

const char* calendarText(time_t second) {
  static thread_local Calendar calendar;
  if (calendar.valid && calendar.second == second) return calendar.text;
  calendar.valid = false;
  tm local{};
  followTimeZone();
  if (localtime_r(&second, &local) == nullptr) return nullptr;
  if (std::strftime(calendar.text, sizeof calendar.text, "%F %X", &local) == 0) {
    calendar.text[0] = '\0';
  }
  calendar.second = second;
  calendar.valid = true;
  return calendar.text;
}

}  // namespace

void followTimeZone() {
  static std::atomic<uint64_t> followed{0};
  const uint64_t present = zoneFile();
  if (followed.exchange(present) != present) tzset();
}

void LogRecord::init(int recordLevel, const std::string& text) {
  stamp(recordLevel, dmap);
  message = text;
}

void RecordStamp::stamp(int recordLevel, bool isDmap) {
  level = recordLevel;
  dmap = isDmap;
  const ThreadIds ids = currentThread();
  tid = ids.thread;
  pid = ids.process;
  gettimeofday(&time, nullptr);
}

std::string LogRecord::getDiagEntry() const {
  char entry[LogLine::kBufferSize];
  return std::string(entry, formatEntry(message, entry));
}

size_t RecordStamp::formatEntry(std::string_view text, char (&entry)[LogLine::kBufferSize]) const {
  const char* const date = calendarText(time.tv_sec);
  if (date == nullptr) {
    // Straight to the platform: the caller may be inside a log call already.
    const LogLine line("ORB", kLogSource, "getDiagEntry", __LINE__, "Unable to obtain valid time");
    __android_log_print(ANDROID_LOG_ERROR, LogTag::get(), "%s", line.text());
    return 0;
  }
  const int head = std::snprintf(
      entry, sizeof entry, "%s.%03d %5d %5lu %c %s : ", date, static_cast<int>(time.tv_usec / 1000),
      pid, static_cast<unsigned long>(tid), levelLetter(level), dmap ? "DMAP" : "ORB");
  const size_t start = static_cast<size_t>(std::max(head, 0));
  const size_t size = std::min(text.size(), sizeof entry - 1 - start);
  std::memcpy(entry + start, text.data(), size);
  entry[start + size] = '\0';
  return start + size;
}
