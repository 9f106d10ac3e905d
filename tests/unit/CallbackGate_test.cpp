// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "CallbackGate.h"

#include <gtest/gtest.h>

#include <atomic>
#include <future>
#include <thread>
#include <vector>

namespace {

TEST(CallbackGate, IsOpenAtFirst) {
  CallbackGate gate;
  const CallbackGate::Pass pass(gate);
  EXPECT_TRUE(pass);
}

TEST(CallbackGate, LetsNobodyInOnceClosed) {
  CallbackGate gate;
  gate.close();
  const CallbackGate::Pass pass(gate);
  EXPECT_FALSE(pass);
  EXPECT_FALSE(CallbackGate::insideCallback()) << "a refused callback does not run";
}

TEST(CallbackGate, ClosingTwiceIsClosing) {
  CallbackGate gate;
  gate.close();
  gate.close();
  gate.drain();
  EXPECT_FALSE(CallbackGate::Pass(gate));
}

TEST(CallbackGate, DrainOfAnIdleGateDoesNotWait) {
  CallbackGate gate;
  gate.drain();
  gate.close();
  gate.drain();
}

TEST(CallbackGate, ThreadIsInsideWhileItHoldsAPass) {
  CallbackGate gate;
  EXPECT_FALSE(CallbackGate::insideCallback());
  {
    const CallbackGate::Pass pass(gate);
    EXPECT_TRUE(CallbackGate::insideCallback());
  }
  EXPECT_FALSE(CallbackGate::insideCallback());
}

TEST(CallbackGate, NestedCallbacksOfTwoServicesCountBoth) {
  CallbackGate one;
  CallbackGate other;
  const CallbackGate::Pass outer(one);
  {
    const CallbackGate::Pass inner(other);
    EXPECT_TRUE(inner);
  }
  EXPECT_TRUE(CallbackGate::insideCallback());
  other.close();
  other.drain();  // its callback has ended, the outer one is not its business
}

TEST(CallbackGate, OtherThreadsAreNotInside) {
  CallbackGate gate;
  const CallbackGate::Pass pass(gate);
  bool inside = true;
  std::thread([&] { inside = CallbackGate::insideCallback(); }).join();
  EXPECT_FALSE(inside);
}

TEST(CallbackGate, CloseDoesNotWaitForCallbacksButDrainDoes) {
  CallbackGate gate;
  std::promise<void> entered;
  std::promise<void> leave;
  std::atomic<bool> left{false};
  std::thread callback([&] {
    const CallbackGate::Pass pass(gate);
    entered.set_value();
    leave.get_future().wait();
    left = true;
  });
  entered.get_future().wait();
  gate.close();
  EXPECT_FALSE(CallbackGate::Pass(gate));
  EXPECT_FALSE(left);
  leave.set_value();
  gate.drain();
  EXPECT_TRUE(left);
  callback.join();
}

TEST(CallbackGate, NoCallbackRunsAfterCloseAndDrain) {
  CallbackGate gate;
  std::atomic<bool> drained{false};
  std::atomic<bool> late{false};
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([&] {
      for (;;) {
        const CallbackGate::Pass pass(gate);
        if (!pass) return;
        if (drained) late = true;
      }
    });
  }
  gate.close();
  gate.drain();
  drained = true;
  for (std::thread& thread : threads) thread.join();
  EXPECT_FALSE(late);
}

}  // namespace
