// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
// The timer queue when memory runs out: a timer that cannot be added changes nothing, and to remove
// and to run the others takes no memory.
#include <new>

#include "FailingNew.h"
#include "OrbTimerFixture.h"

namespace {

class OrbTimerMemory : public orbtimer::OrbTimerTest {
 protected:
  int add(long delay) {
    return mTimer.addTimedCallback(
        delay,
        [](void* calls) {
          ++*static_cast<size_t*>(calls);
          return -1;
        },
        &mCalls);
  }

  static constexpr size_t kEvents = 1000;
  size_t mCalls = 0;
};

TEST_F(OrbTimerMemory, TimerThatCannotBeAddedChangesNothing) {
  size_t added = 0, thrown = 0;
  while (added < kEvents) {
    memory::failEach(
        memory::Caller::Anybody,
        [&] {
          try {
            add(static_cast<long>(added % 50));
            ++added;
          } catch (const std::bad_alloc&) {
            ++thrown;
          }
        },
        [](size_t) {});
  }
  EXPECT_GT(thrown, 0u);
  mTimer.advanceMillis(50);
  EXPECT_EQ(-1, mTimer.processEvents());
  EXPECT_EQ(kEvents, mCalls);
}

TEST_F(OrbTimerMemory, RemovingAndRunningTakesNoMemory) {
  std::vector<int> ids;
  for (size_t i = 0; i < kEvents; ++i) ids.push_back(add(static_cast<long>(i % 50)));
  mTimer.advanceMillis(50);
  {
    const memory::NoMemory none;
    for (size_t i = 0; i < kEvents; i += 3) mTimer.removeTimedCallback(ids[i]);
    for (size_t i = 0; i < kEvents; i += 3) mTimer.removeTimedCallback(ids[i]);
    EXPECT_EQ(-1, mTimer.processEvents());
  }
  EXPECT_EQ(kEvents - (kEvents + 2) / 3, mCalls);
}

}  // namespace
