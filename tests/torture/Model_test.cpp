// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
// Random calls on several threads and inside callbacks, with a daemon that misbehaves in some
// rounds, against a model of what the library promises. Each round has its own seed. A finding
// prints it; the same seed makes the same choices again.
#include <gtest/gtest.h>

#include "ModelPlayer.h"
#include "Pulse.h"
#include "Torture.h"

namespace torture {
namespace {

using What = ModelBooks::What;
using std::chrono::milliseconds;

class Model : public ::testing::Test {
 protected:
  static ModelBooks& books() { return ModelBooks::get(); }

  void SetUp() override {
    for (int i = 0; i < 2; ++i) calmCycle();  // creates what exists once per process
    mBefore = Census();
  }
  void TearDown() override { Watchdog::stop(); }

  // Enables and disables all services with a daemon that does not misbehave, and checks that they
  // work.
  void calmCycle() {
    books().beginRound();
    if (!mDaemon.begin({}, 1)) books().mistake("the daemon does not start");
    for (const Service service : {kLce, kLle, kLli}) {
      ModelCalls::enable(service, false);
      if (!books().awaitCallback(service, 0, std::chrono::seconds(20))) {
        books().mistake("%s does not work", nameOf(service));
      }
    }
    for (const Service service : {kLce, kLle, kLli}) {
      if (!ModelCalls::disable(service, true)) books().mistake("the last disable was refused");
    }
    if (!libraryThreadsEnd()) books().mistake("threads of the library do not end");
    endRound();
  }
  void endRound() {
    mDaemon.finish();
    books().endRound();
    if (books().starved()) ++mStarved;
  }

  void round(const Theme& theme, uint64_t seed) {
    books().beginRound();
    ModelDaemon::Manners manners;
    manners.flood = theme.flood;
    manners.harmful = theme.harmful;
    if (theme.together) manners.silentFor = static_cast<int>(seed / 7 % kServices);
    if (!mDaemon.begin(manners, seed)) books().mistake("the daemon does not start");
    {
      ModelPlayer player(theme, seed);
      player.play(mDaemon);
    }
    endRound();
    mConnections += mDaemon.connections();
    if (books().mistaken()) return;
    calmCycle();
    if (!comesBackTo(mBefore)) {
      const Census now;
      books().mistake("%zu descriptors, %zu threads -> %zu, %zu", mBefore.descriptors,
                      mBefore.threads, now.descriptors, now.threads);
    }
  }

  static std::string finding(const Theme& theme, uint64_t seed) {
    std::string text = "seed " + std::to_string(seed) + ", " + theme.name + '\n';
    for (const std::string& mistake : books().mistakes()) text += "  " + mistake + '\n';
    return text + "What each thread did last:\n" + books().history().text();
  }

  Pulse mPulse{[] { books().starve(); }};
  ModelDaemon mDaemon;
  Census mBefore;
  uint64_t mConnections = 0;
  uint64_t mStarved = 0;
};

TEST_F(Model, HoldsInEveryRound) {
  const uint64_t rounds = countOr(kChecked ? 8 : 16);
  const uint64_t seed = seedOfRun();
  const uint64_t only = setting("ORB_TORTURE_THEME", themes().size());
  printf("model: seed %llu\n", static_cast<unsigned long long>(seed));
  fflush(stdout);
  uint64_t done = 0;
  for (; done < rounds && !books().mistaken(); ++done) {
    const uint64_t own = seed + done;
    const Theme& theme = themes()[only < themes().size() ? only : own % themes().size()];
    Watchdog::step("round of seed %llu, %s", static_cast<unsigned long long>(own), theme.name);
    round(theme, own);
    if (books().mistaken()) ADD_FAILURE() << finding(theme, own);
  }
  const ModelBooks::Totals totals = books().totals();
  printf("model: %llu rounds, %llu calls, %llu of them refused, %llu in a certain state\n",
         static_cast<unsigned long long>(done), static_cast<unsigned long long>(totals.calls),
         static_cast<unsigned long long>(totals.refused),
         static_cast<unsigned long long>(totals.checkedResults));
  printf("model: %llu connections, %llu callbacks, %llu functions whose end was promised\n",
         static_cast<unsigned long long>(mConnections),
         static_cast<unsigned long long>(totals.callbacks),
         static_cast<unsigned long long>(totals.closed));
  if (mStarved > 0) {
    printf("model: the machine was too busy for promises about time, %llu times\n",
           static_cast<unsigned long long>(mStarved));
  }
}

}  // namespace
}  // namespace torture
