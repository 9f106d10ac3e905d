// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
// The daemon is killed and started again and again under traffic of many threads. Whatever was lost
// on the way, in the end the books balance.
#include <gtest/gtest.h>

#include "ChaosTraffic.h"
#include "LceFixture.h"
#include "RealDaemon.h"
#include "Torture.h"
#include "orbsim/Daemon.h"

namespace torture {
namespace {

constexpr unsigned kThreads = 8;
// Every so many lives of the daemon are one of the real program.
constexpr uint64_t kRealEvery = 6;
// Longer than the library's pause between two attempts to connect.
constexpr std::chrono::milliseconds kReconnect(120);

orbsim::Options options() {
  orbsim::Options options;
  options.reportInterval = std::chrono::milliseconds(1);
  options.record = false;
  return options;
}

// Each criteria request gets this answer, and then that of the daemon.
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

// One life of the daemon after the other, each as long as chance wills.
class Lives {
 public:
  Lives(ChaosTraffic& traffic, uint64_t seed)
      : mTraffic(traffic), mRandom(static_cast<unsigned>(seed)) {
    mDaemon.setFrameHandler(answerCriteria);
  }

  // Absent for a while, then there until it is killed.
  void live() {
    mTraffic.grant(mRandom() % 24);
    if (++mKills % kRealEvery == 0) {
      liveAsProgram();
    } else {
      liveInProcess();
    }
  }
  uint64_t kills() const { return mKills; }
  uint64_t programs() const { return mPrograms; }
  orbsim::Totals totals() const { return mDaemon.totals(); }

 private:
  // A part of the traffic goes on while connections are made anew; with no service enabled no
  // frames come.
  void liveInProcess() {
    ASSERT_TRUE(mDaemon.start()) << mDaemon.error();
    for (auto parts = mRandom() % 5; parts > 0; --parts) {
      const size_t frames = mDaemon.totals().frames + mRandom() % 60;
      mTraffic.grant(1 + mRandom() % 100);
      mDaemon.waitForFrames(frames, kReconnect);
    }
    if (mRandom() % 4 == 0) mDaemon.closeAll();  // connections go before the listener
    mDaemon.stop();
  }
  void liveAsProgram() {
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

// A whole life of all services, which also closes every account from before.
void cycleOnTheBooks() {
  orbsim::Daemon daemon{options()};
  ASSERT_TRUE(daemon.start()) << daemon.error();
  for (const Service service : {kLce, kLle, kLli}) ChaosTraffic::enable(service, false);
  EXPECT_TRUE(daemon.waitForFrames(3));
  for (const Service service : {kLce, kLle, kLli}) {
    EXPECT_TRUE(ChaosTraffic::disable(service, false, false));
  }
  EXPECT_TRUE(libraryThreadsEnd());
}

TEST(Chaos, BooksBalanceAfterEveryDeathOfTheDaemon) {
  const uint64_t seed = seedOfRun();
  printf("chaos: seed %llu\n", static_cast<unsigned long long>(seed));
  fflush(stdout);
  for (int i = 0; i < 3; ++i) cycleOnTheBooks();  // what is made once per process is made now
  const Census before;
  const uint64_t kills = countOr(60);
  {
    ChaosTraffic traffic(kThreads, seed);
    Lives lives(traffic, seed);
    while (lives.kills() < kills) {
      Watchdog::step("life %llu of the daemon, seed %llu",
                     static_cast<unsigned long long>(lives.kills() + 1),
                     static_cast<unsigned long long>(seed));
      lives.live();
      if (testing::Test::HasFailure() || !ChaosTraffic::accounts().mistakes().empty()) break;
    }
    Watchdog::step("the end of the threads, seed %llu", static_cast<unsigned long long>(seed));
    traffic.join();
    printf("chaos: %llu kills survived, %llu of them of a real process; %llu calls\n",
           static_cast<unsigned long long>(lives.kills()),
           static_cast<unsigned long long>(lives.programs()),
           static_cast<unsigned long long>(traffic.granted()));
    printf("chaos: %zu connections, %zu frames to the daemon in this process\n",
           lives.totals().connections, lives.totals().frames);
    Watchdog::step("the last disable, seed %llu", static_cast<unsigned long long>(seed));
    disableAll();
  }
  EXPECT_TRUE(libraryThreadsEnd());
  cycleOnTheBooks();
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
