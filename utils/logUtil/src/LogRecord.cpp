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
constexpr size_t kMillisSize = 3;
constexpr size_t kHeadSize = 112;  // a date, two numbers of any size and what is between them
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

// What the records of one thread begin with within one second, up to the letter of the level, with
// room for that and for the milliseconds: kept for the records that follow, as the conversion costs
// more than the rest of the text. The time zone is looked at anew for every second.
struct EntryHead {
  bool dated = false;  // the text begins with the date of `second`
  time_t second = 0;
  int pid = 0;
  long tid = 0;
  size_t millis = 0;  // where they are
  size_t size = 0;    // up to and with the letter
  char text[kHeadSize] = "";
};

// Date and time of the second in local time, and the point before the milliseconds.
bool putDate(EntryHead& head, time_t second) {
  head.dated = false;
  tm local{};
  followTimeZone();
  if (localtime_r(&second, &local) == nullptr) return false;
  head.millis = std::strftime(head.text, kDateSize, "%F %X", &local);
  head.text[head.millis++] = '.';
  head.second = second;
  head.dated = true;
  return true;
}

void putIds(EntryHead& head, int pid, long tid) {
  const size_t at = head.millis + kMillisSize;
  const int size = std::snprintf(head.text + at, sizeof head.text - at, " %5d %5lu  ", pid,
                                 static_cast<unsigned long>(tid));
  head.size = at + static_cast<size_t>(std::max(size, 0));
  head.pid = pid;
  head.tid = tid;
}

const EntryHead* headOf(const RecordStamp& record) {
  static thread_local EntryHead head;
  const bool sameSecond = head.dated && head.second == record.time.tv_sec;
  if (sameSecond && head.tid == record.tid && head.pid == record.pid) return &head;
  if (!sameSecond && !putDate(head, record.time.tv_sec)) return nullptr;
  putIds(head, record.pid, record.tid);
  return &head;
}

void putMillis(char* out, long millis) {
  out[0] = static_cast<char>('0' + millis / 100 % 10);
  out[1] = static_cast<char>('0' + millis / 10 % 10);
  out[2] = static_cast<char>('0' + millis % 10);
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
  const EntryHead* const head = headOf(*this);
  if (head == nullptr) {
    // Straight to the platform: the caller may be inside a log call already.
    const LogLine line("ORB", kLogSource, "getDiagEntry", __LINE__, "Unable to obtain valid time");
    __android_log_print(ANDROID_LOG_ERROR, LogTag::get(), "%s", line.text());
    return 0;
  }
  std::memcpy(entry, head->text, sizeof head->text);
  putMillis(entry + head->millis, time.tv_usec / 1000);
  entry[head->size - 1] = levelLetter(level);
  char* at = entry + head->size;
  const std::string_view tag = dmap ? " DMAP : " : " ORB : ";
  std::memcpy(at, tag.data(), tag.size());
  at += tag.size();
  const size_t size = std::min(text.size(), static_cast<size_t>(entry + sizeof entry - 1 - at));
  std::memcpy(at, text.data(), size);
  at[size] = '\0';
  return static_cast<size_t>(at - entry) + size;
}
