// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
// The daemon is killed and started again many times while many threads use the library. Messages
// are lost, but at the end the accounts show no mistake.
#include <gtest/gtest.h>

#include "ChaosTraffic.h"
#include "LceFixture.h"
#include "RealDaemon.h"
#include "Torture.h"
#include "orbsim/Daemon.h"

namespace torture {
namespace {

constexpr unsigned kThreads = 8;
// One run of the daemon in so many is a run of the program orbd-sim.
constexpr uint64_t kRealEvery = 6;
// Longer than the library's pause between two attempts to connect.
constexpr std::chrono::milliseconds kReconnect(120);

orbsim::Options options() {
  orbsim::Options options;
  options.reportInterval = std::chrono::milliseconds(1);
  options.record = false;
  return options;
}

// Each criteria request gets this answer first, and then the daemon's own.
bool answerCriteria(orbsim::Session& session, const orbsim::Frame& frame) {
  const orbsim::Blob blob = frame.blob();
  LceProto::ServiceMsg request;
  if (frame.sdkType() == orbsim::kSdkTypeLce &&
      request.ParseFromArray(blob.data(), static_cast<int>(blob.size())) &&
      request.event_id() == LceProto::SET_REPORTING_CRITERIA) {
    session.sendBlob(orbsim::kSdkTypeLce, servicetest::serialise(lcetest::criteriaResult(
                                              request.transaction_id(), true, "NONE")));
  }
  return false;
}

// Runs of the daemon, one after the other, each of random length.
class DaemonRuns {
 public:
  DaemonRuns(ChaosTraffic& traffic, uint64_t seed)
      : mTraffic(traffic), mRandom(static_cast<unsigned>(seed)) {
    mDaemon.setFrameHandler(answerCriteria);
  }

  // The daemon is absent for a while, then runs until it is killed.
  void next() {
    mTraffic.grant(mRandom() % 24);
    if (++mKills % kRealEvery == 0) {
      runAsProgram();
    } else {
      runInProcess();
    }
  }
  uint64_t kills() const { return mKills; }
  uint64_t programs() const { return mPrograms; }
  orbsim::Totals totals() const { return mDaemon.totals(); }

 private:
  // A part of the calls comes while the library connects again. While no service is enabled, no
  // frames come.
  void runInProcess() {
    ASSERT_TRUE(mDaemon.start()) << mDaemon.error();
    for (auto parts = mRandom() % 5; parts > 0; --parts) {
      const size_t frames = mDaemon.totals().frames + mRandom() % 60;
      mTraffic.grant(1 + mRandom() % 100);
      mDaemon.waitForFrames(frames, kReconnect);
    }
    if (mRandom() % 4 == 0) mDaemon.closeAll();  // connections end before the listener
    mDaemon.stop();
  }
  void runAsProgram() {
    ASSERT_TRUE(mReal.start());
    mTraffic.grant(1 + mRandom() % 400);
    mReal.kill();
    ++mPrograms;
  }

  ChaosTraffic& mTraffic;
  std::minstd_rand mRandom;
  orbsim::Daemon mDaemon{options()};
  RealDaemon mReal;
  uint64_t mKills = 0;
  uint64_t mPrograms = 0;
};

void disableAll() {
  for (const Service service : {kLce, kLle, kLli}) {
    while (ChaosTraffic::disable(service, false, false)) {
    }
  }
}

// Enables and disables all services, which also closes every earlier account.
void recordedCycle() {
  orbsim::Daemon daemon{options()};
  ASSERT_TRUE(daemon.start()) << daemon.error();
  for (const Service service : {kLce, kLle, kLli}) ChaosTraffic::enable(service, false);
  EXPECT_TRUE(daemon.waitForFrames(3));
  for (const Service service : {kLce, kLle, kLli}) {
    EXPECT_TRUE(ChaosTraffic::disable(service, false, false));
  }
  EXPECT_TRUE(libraryThreadsEnd());
}

TEST(Chaos, AccountsShowNoMistakeAfterManyDaemons) {
  const uint64_t seed = seedOfRun();
  printf("chaos: seed %llu\n", static_cast<unsigned long long>(seed));
  fflush(stdout);
  for (int i = 0; i < 3; ++i) recordedCycle();  // creates what exists once per process
  const Census before;
  const uint64_t kills = countOr(60);
  {
    ChaosTraffic traffic(kThreads, seed);
    DaemonRuns runs(traffic, seed);
    while (runs.kills() < kills) {
      Watchdog::step("daemon %llu, seed %llu", static_cast<unsigned long long>(runs.kills() + 1),
                     static_cast<unsigned long long>(seed));
      runs.next();
      if (testing::Test::HasFailure() || !ChaosTraffic::accounts().mistakes().empty()) break;
    }
    Watchdog::step("the end of the threads, seed %llu", static_cast<unsigned long long>(seed));
    traffic.join();
    printf("chaos: %llu kills survived, %llu of them of a real process; %llu calls\n",
           static_cast<unsigned long long>(runs.kills()),
           static_cast<unsigned long long>(runs.programs()),
           static_cast<unsigned long long>(traffic.granted()));
    printf("chaos: %zu connections, %zu frames to the daemon in this process\n",
           runs.totals().connections, runs.totals().frames);
    Watchdog::step("the last disable, seed %llu", static_cast<unsigned long long>(seed));
    disableAll();
  }
  EXPECT_TRUE(libraryThreadsEnd());
  recordedCycle();
  EXPECT_TRUE(comesBackTo(before))
      << before.descriptors << " descriptors, " << before.threads << " threads -> "
      << Census().descriptors << ", " << Census().threads;
  Watchdog::stop();

  const Accounts::Totals totals = ChaosTraffic::accounts().totals();
  uint64_t calls = 0;
  for (const uint64_t each : totals.calls) calls += each;
  printf(
      "chaos: %llu callbacks registered, %llu of them checked after a disable had returned, "
      "%llu not (disabled inside a callback), %llu calls left out\n",
      static_cast<unsigned long long>(totals.opened),
      static_cast<unsigned long long>(totals.closed),
      static_cast<unsigned long long>(totals.released),
      static_cast<unsigned long long>(totals.none));
  const auto mistakes = ChaosTraffic::accounts().mistakes();
  printf("chaos: %llu callbacks called; %llu of %llu criteria requests answered; %zu mistakes\n",
         static_cast<unsigned long long>(calls), static_cast<unsigned long long>(totals.answered),
         static_cast<unsigned long long>(totals.criteria), mistakes.size());
  EXPECT_LE(totals.answered, totals.criteria);
  EXPECT_TRUE(mistakes.empty()) << "first: " << mistakes.front();
}

}  // namespace
}  // namespace torture
