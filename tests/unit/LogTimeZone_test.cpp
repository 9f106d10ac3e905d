// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
//
// The time zone of records: changes are followed, and the environment is not changed. This
// program's tzset and stat are used instead of the C library's.
#include <sys/stat.h>

#include <atomic>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "CLibrary.h"
#include "Interposed.h"
#include "LogTestPeer.h"

namespace {

// The status of the system's zone file; without a value: the real file. 0: it does not exist.
std::optional<time_t> zoneFileTime;
std::atomic<int> environmentReads{0};

}  // namespace

extern "C" void tzset() ORB_C_FUNCTION {
  ++environmentReads;
  ORB_NEXT(tzset)();
}

extern "C" int stat(const char* path, struct stat* status) ORB_C_FUNCTION {
  const bool faked = zoneFileTime && std::strcmp(path, "/etc/localtime") == 0;
  if (!faked) return ORB_NEXT(stat)(path, status);
  *status = {};
  status->st_mtim.tv_sec = *zoneFileTime;
  errno = ENOENT;
  return *zoneFileTime == 0 ? -1 : 0;
}

namespace {

// 2025-05-24 13:02:07 UTC.
constexpr time_t kSecond = 1748091727;

class LogTimeZoneTest : public LogFixture {
 protected:
  LogTimeZoneTest() {
    record.message = "text";
    record.time = {kSecond, 0};
    setZone("UTC0");
    tzset();
    zoneFileTime = 1000;
    followTimeZone();
    environmentReads = 0;
  }
  ~LogTimeZoneTest() override {
    zoneFileTime.reset();
    unsetenv("TZ");
    tzset();
  }

  static void setZone(const char* zone) { setenv("TZ", zone, 1); }
  // The hour of a record of the next second.
  std::string nextSecond() {
    ++record.time.tv_sec;
    return record.getDiagEntry().substr(11, 2);
  }

  Log::LogRecord record;
};

TEST_F(LogTimeZoneTest, ZoneThatTheApplicationHasSetCountsFromTheNextSecond) {
  EXPECT_EQ("13", nextSecond());
  setZone("TST-2");
  tzset();
  EXPECT_EQ("15", nextSecond());
}

// The variable replaces new contents of the file, because the C library reads both in one call.
TEST_F(LogTimeZoneTest, ZoneFileThatWasReplacedCountsFromTheNextSecond) {
  EXPECT_EQ("13", nextSecond());
  setZone("TST-2");
  zoneFileTime = 1001;
  EXPECT_EQ("15", nextSecond());
  EXPECT_EQ(1, environmentReads);
}

TEST_F(LogTimeZoneTest, ZoneFileThatGoesAndComesCounts) {
  zoneFileTime = 0;
  nextSecond();
  EXPECT_EQ(1, environmentReads);
  zoneFileTime = 1000;
  nextSecond();
  EXPECT_EQ(2, environmentReads);
}

TEST_F(LogTimeZoneTest, EnvironmentIsNotReadWhileTheZoneFileStays) {
  for (int i = 0; i < 1000; ++i) nextSecond();
  std::thread([this] { nextSecond(); }).join();
  EXPECT_EQ(0, environmentReads);
}

TEST_F(LogTimeZoneTest, SetUpReadsTheEnvironmentOnTheCallersThread) {
  zoneFileTime = 1001;
  log.init("app");
  EXPECT_EQ(1, environmentReads);
  std::thread([this] { nextSecond(); }).join();
  EXPECT_EQ(1, environmentReads);
}

// Other variables are added, changed and removed as fast as possible, while records of different
// seconds are made. If the C library itself reads the environment for each local time, the records
// are made within one second.
TEST_F(LogTimeZoneTest, EnvironmentMayBeChangedWhileThreadsLog) {
#ifdef __GLIBC__
  constexpr time_t kStep = 1;
#else
  constexpr time_t kStep = 0;
#endif
  constexpr int kThreads = 3, kRecords = 100000, kVariables = 500;
  std::atomic<int> atWork{kThreads};
  std::vector<std::thread> threads;
  for (int t = 0; t < kThreads; ++t) {
    threads.emplace_back([&atWork, mine = record]() mutable {
      for (int i = 0; i < kRecords; ++i) {
        mine.time.tv_sec += kStep;
        EXPECT_FALSE(mine.getDiagEntry().empty());
      }
      --atWork;
    });
  }
  static char put[] = "ORB_TEST_PUT=1";
  while (atWork > 0) {
    for (int i = 0; i < kVariables; ++i)
      setenv(("ORB_TEST_" + std::to_string(i)).c_str(), std::string(100, 'x').c_str(), 1);
    putenv(put);
    for (int i = 0; i < kVariables; ++i) unsetenv(("ORB_TEST_" + std::to_string(i)).c_str());
    unsetenv("ORB_TEST_PUT");
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(0, environmentReads);
}

}  // namespace
