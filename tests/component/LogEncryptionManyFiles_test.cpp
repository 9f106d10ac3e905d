// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
//
// A start with very many old logs. This program's unlink() and pthread_create() are used instead of
// the C library's: they count calls or fail.
#include <dirent.h>
#include <pthread.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <functional>
#include <thread>

#include "FailingThreads.h"
#include "LogEncryptionFixture.h"
#include "ProcessState.h"

namespace {

std::atomic<size_t> removedHere{0};
const pthread_t mainThread = pthread_self();

}  // namespace

extern "C" int unlink(const char* path) {
  if (pthread_equal(pthread_self(), mainThread) != 0) ++removedHere;
  return ORB_NEXT(unlink)(path);
}

namespace logtest {
namespace {

using Clock = std::chrono::steady_clock;

constexpr int kMany = 10000;

double millisecondsSince(Clock::time_point start) {
  return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

class LogEncryptionManyFilesTest : public LogEncryptionFixture {
 protected:
  ~LogEncryptionManyFilesTest() override { threads::forget(); }

  // All files get the same second, even if creating them takes longer.
  void leave(const std::string& name, time_t age) const {
    const int fd = open((fs::path(kMain) / name).c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0666);
    timespec times[2] = {};
    times[0].tv_sec = times[1].tv_sec = now - age;
    EXPECT_EQ(0, futimens(fd, times));
    close(fd);
  }
  // Backup files whose names look like logs, each with a different age, or all with the same age.
  void leaveMany(bool ofOneAge) const {
    for (int i = 0; i < kMany; ++i)
      leave("orb_log_p0_backup" + std::to_string(i), ofOneAge ? 1000 : 1000 + i);
  }
  static size_t countNames() {
    size_t count = 0;
    for (const fs::directory_entry& entry : fs::directory_iterator(kMain)) {
      (void)entry;
      ++count;
    }
    return count;
  }
  // Finds the ages of files with the usual functions.
  static double timeOfListing() {
    const Clock::time_point start = Clock::now();
    DIR* const directory = opendir(kMain);
    time_t youngest = 0;
    while (const dirent* entry = readdir(directory)) {
      struct stat status = {};
      if (lstat((std::string(kMain) + "/" + entry->d_name).c_str(), &status) == 0)
        youngest = std::max(youngest, status.st_mtime);
    }
    closedir(directory);
    EXPECT_NE(0, youngest);
    return millisecondsSince(start);
  }
  double timeOfStart() {
    removedHere = 0;
    const Clock::time_point start = Clock::now();
    log.init("orb");
    return millisecondsSince(start);
  }
  // The thread sets its name when it starts.
  static void awaitRemoval(size_t left) {
    while (countNames() > left || processstate::threadsNamed("orb-log-remove") > 0)
      std::this_thread::yield();
  }
  // The minimum of some rounds, for both.
  void compare(bool ofOneAge) {
    log.init("orb");  // what is made once per process
    double listing = 1e9, start = 1e9;
    for (int round = 0; round < 3; ++round) {
      LogTestPeer::reset();
      clearData();
      configure();
      leaveMany(ofOneAge);
      for (int i = 0; i < 2; ++i) listing = std::min(listing, timeOfListing());
      start = std::min(start, timeOfStart());
      EXPECT_LE(removedHere, 50u);
      awaitRemoval(ofOneAge ? kMany + 1 : 4);
      EXPECT_EQ(ofOneAge ? kMany + 1u : 4u, countNames());
    }
    std::printf("%d old files of %s: start %.1f ms, listing %.1f ms, ratio %.2f\n", kMany,
                ofOneAge ? "one age" : "all ages", start, listing, start / listing);
    EXPECT_LT(start, 3 * listing);
  }

  const time_t now = time(nullptr);
};

TEST_F(LogEncryptionManyFilesTest, StartBesideFilesOfOneAgeTakesAboutAsLongAsListingThem) {
  compare(true);
}

TEST_F(LogEncryptionManyFilesTest, StartBesideFilesOfAllAgesTakesAboutAsLongAsListingThem) {
  compare(false);
}

TEST_F(LogEncryptionManyFilesTest, NamesOfTheRunItselfAreFreeAtOnceAndStay) {
  configure();
  leaveMany(false);
  leave("orb_log_p0_00", 100);  // the newest; the run begins with the next one
  for (int i = 1; i <= 3; ++i) leave("orb_log_p0_0" + std::to_string(i), 90000 + i);
  log.init("orb");
  EXPECT_TRUE(fs::exists(fs::path(kMain) / "orb_log_p0_01"));
  for (const char* name : {"orb_log_p0_02", "orb_log_p0_03"})
    EXPECT_FALSE(fs::exists(fs::path(kMain) / name)) << name;
  awaitRemoval(4);
  EXPECT_EQ((Texts{"orb_log_p0_00", "orb_log_p0_01", "orb_log_p0_backup0", "orb_log_p0_backup1"}),
            namesIn(kMain));
  EXPECT_EQ(1u, linesIn(fs::path(kMain) / "orb_log_p0_01").size());
}

// Another program whose name has the same start can begin a file before the removal.
TEST_F(LogEncryptionManyFilesTest, FileThatTakesTheNameOfAnOldOneMeanwhileStays) {
  configure();
  leaveMany(false);
  threads::beforeNext([] {
    const fs::path path = fs::path(kMain) / "orb_log_p0_backup5000";
    EXPECT_TRUE(fs::remove(path));
    std::ofstream(path) << "new";
  });
  log.init("orb");
  awaitRemoval(5);
  EXPECT_EQ((Texts{"orb_log_p0_01", "orb_log_p0_backup0", "orb_log_p0_backup1",
                   "orb_log_p0_backup2", "orb_log_p0_backup5000"}),
            namesIn(kMain));
}

TEST_F(LogEncryptionManyFilesTest, AThousandAreGoneWhenTheStartReturns) {
  configure();
  for (int i = 0; i < 1000; ++i) leave("orb_log_p0_backup" + std::to_string(i), 1000 + i);
  log.init("orb");
  EXPECT_EQ(4u, countNames());
  EXPECT_GE(removedHere, 997u);
}

TEST_F(LogEncryptionManyFilesTest, WithoutAThreadTheStartRemovesThemItself) {
  configure();
  leaveMany(false);
  threads::fail = true;
  log.init("orb");
  EXPECT_EQ(4u, countNames());
}

}  // namespace
}  // namespace logtest
