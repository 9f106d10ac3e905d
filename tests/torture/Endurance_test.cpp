// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
// After many repetitions the process has as much memory and as many descriptors and threads as
// before.
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <mutex>

#include "Functions.h"
#include "LceFixture.h"
#include "LleFixture.h"
#include "LliFixture.h"
#include "Rounds.h"
#include "Torture.h"
#include "orbsim/Daemon.h"

namespace torture {
namespace {

using orbsim::Blob;
using servicetest::serialise;

// The allocator may keep this much for threads that have ended.
constexpr size_t kSlack = size_t{1} << 20;

bool isStatus(const Heard& call) { return call.isStatus(); }
bool isIndication(const Heard& call) { return !call.isStatus(); }
void awaitHeard(bool (*which)(const Heard&), uint64_t count) {
  heard().waitFor(which, count, HeardCalls::kWatched);
}

orbsim::Options options() {
  orbsim::Options options;
  options.reportInterval = std::chrono::milliseconds(0);
  options.record = false;
  return options;
}

// Compares what the process has after the warm-up with what it has at the end.
class Level {
 public:
  void mark() {
    mCensus = Census();
    mBytes = residentBytes();
  }
  void expectTheSame(const char* what, uint64_t times) {
    const size_t now = residentBytes();
    const Census census;
    printf(
        "endurance: %llu %s: resident %zu -> %zu KiB, descriptors %zu -> %zu, threads %zu -> "
        "%zu\n",
        static_cast<unsigned long long>(times), what, mBytes / 1024, now / 1024,
        mCensus.descriptors, census.descriptors, mCensus.threads, census.threads);
    EXPECT_TRUE(comesBackTo(mCensus));
    // An emulator keeps memory for each thread that has ended.
    EXPECT_TRUE(kChecked || emulated() || now <= mBytes + kSlack);
  }

 private:
  Census mCensus;
  size_t mBytes = 0;
};

class Endurance : public ::testing::Test {
 protected:
  void SetUp() override { ASSERT_TRUE(mDaemon.start()) << mDaemon.error(); }
  void TearDown() override {
    for (const Service service : {kLce, kLle, kLli}) disable(service);
    Watchdog::stop();
  }
  orbsim::Daemon mDaemon{options()};
  uint64_t mStatuses = heard().count(isStatus);
};

class EnduranceOfCycles : public Endurance {
 protected:
  void cycle() {
    Watchdog::step("cycle %llu", static_cast<unsigned long long>(mCycles));
    const bool second = mCycles % 2 == 1;
    for (const Service service : {kLce, kLle, kLli}) {
      ASSERT_EQ(second ? 0 : 1, second ? create(hearing(), service) : enable(hearing(), service));
    }
    awaitHeard(isStatus, mStatuses += kServices);
    for (const Service service : {kLce, kLle, kLli}) {
      ASSERT_EQ(second ? 0 : 1, second ? destroy(service) : disable(service));
    }
    ++mCycles;
    ASSERT_TRUE(mDaemon.waitForSessionsClosed(mCycles * kServices));
  }
  uint64_t mCycles = 0;
};

TEST_F(EnduranceOfCycles, EnableAndDisableLeaveNothing) {
  const uint64_t cycles = countOr(300);
  const uint64_t warmUp = std::max<uint64_t>(100, cycles / 10);
  Level level;
  while (mCycles < warmUp) ASSERT_NO_FATAL_FAILURE(cycle());
  ASSERT_TRUE(libraryThreadsEnd());
  level.mark();
  while (mCycles < warmUp + cycles) ASSERT_NO_FATAL_FAILURE(cycle());
  ASSERT_TRUE(libraryThreadsEnd());
  level.expectTheSame("cycles of three services", cycles);
}

class EnduranceOfIndications : public Endurance {
 protected:
  static constexpr uint64_t kBatch = 999;  // indications under way; a third for each service

  void enableAll() {
    for (const Service service : {kLce, kLle, kLli}) {
      ASSERT_EQ(1, enable(hearing(), service));
      awaitHeard(isStatus, mStatuses += 1);
    }
    ASSERT_EQ(0, lceRegEstimationReports(hearing().lceReport));
    ASSERT_EQ(0, lleRegEstimationReports(hearing().lleReport));
    ASSERT_EQ(0, lliRegLinkInterruptInd(hearing().lliInterrupt));
    mDaemon.setAutoAnswer(false);
    mSessions = mDaemon.sessionIds();
    ASSERT_EQ(3u, mSessions.size());
    mBlobs[kLce] = serialise(lcetest::periodicReport(1, 1, 1, 1, "NONE"));
    mBlobs[kLle] = serialise(lletest::periodicReport({true, 1, 1, 1, 1, 1, 1, 1, 2}));
    mBlobs[kLli] = serialise(llitest::indication({1, 0, 3, 6, 1, 1}));
  }
  void send(uint64_t count) {
    constexpr uint32_t kTypes[] = {orbsim::kSdkTypeLce, orbsim::kSdkTypeLle, orbsim::kSdkTypeLli};
    while (count > 0) {
      Watchdog::step("indication %llu", static_cast<unsigned long long>(mSent));
      for (uint64_t i = 0; i < kBatch && count > 0; ++i, --count, ++mSent) {
        const auto service = static_cast<size_t>(mSent % kServices);
        ASSERT_TRUE(mDaemon.sendBlob(mSessions[service], kTypes[service], mBlobs[service]));
      }
      awaitHeard(isIndication, mSent);
    }
  }
  std::vector<uint32_t> mSessions;
  Blob mBlobs[kServices];
  uint64_t mSent = 0;
};

TEST_F(EnduranceOfIndications, TheyAllArriveAndLeaveNothing) {
  const uint64_t indications = setting("ORB_TORTURE_INDICATIONS", 100000);
  ASSERT_NO_FATAL_FAILURE(enableAll());
  Level level;
  ASSERT_NO_FATAL_FAILURE(send(10000));
  level.mark();
  ASSERT_NO_FATAL_FAILURE(send(indications));
  level.expectTheSame("indications", indications);
  EXPECT_EQ(mSent, heard().count(isIndication));
}

}  // namespace
}  // namespace torture
