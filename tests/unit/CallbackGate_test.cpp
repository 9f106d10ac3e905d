// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "CallbackGate.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <future>
#include <memory>
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
  other.drain();  // its callback has ended; the outer one does not matter
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

// The callback leaves beside the thread that closes and frees the gate.
TEST(CallbackGate, MayBeFreedAsSoonAsItIsDrained) {
  for (int i = 0; i < 200; ++i) {
    auto gate = std::make_unique<CallbackGate>();
    std::promise<void> entered;
    std::thread callback([&entered, &passed = *gate] {
      const CallbackGate::Pass pass(passed);
      entered.set_value();
    });
    entered.get_future().wait();
    gate->close();
    gate->drain();
    gate.reset();
    callback.join();
  }
}

class ClosedGatesTest : public testing::Test {
 protected:
  // A callback through a gate that was just closed; it runs until leave().
  struct Running {
    explicit Running(ClosedGates& gates) : mPass(new CallbackGate::Pass(*gate)) {
      gate->close();
      number = gates.add(ClosedGates::placeFor(gate));
    }
    void leave() { mPass.reset(); }

    const std::shared_ptr<CallbackGate> gate = std::make_shared<CallbackGate>();
    uint64_t number = 0;

   private:
    std::unique_ptr<CallbackGate::Pass> mPass;
  };

  // Waits on another thread that is not inside a callback.
  std::future<void> await(uint64_t last) {
    return std::async(std::launch::async, [this, last] { mGates.await(last); });
  }
  static bool waits(const std::future<void>& waiter) {
    return waiter.wait_for(std::chrono::milliseconds(20)) == std::future_status::timeout;
  }

  ClosedGates mGates;
};

TEST_F(ClosedGatesTest, NothingToWaitForAtFirst) { mGates.await(~uint64_t{0}); }

TEST_F(ClosedGatesTest, IdleGateIsNotWaitedFor) {
  const auto gate = std::make_shared<CallbackGate>();
  gate->close();
  const std::weak_ptr<CallbackGate> known = gate;
  mGates.await(mGates.add(ClosedGates::placeFor(gate)));
  EXPECT_EQ(1, known.use_count()) << "it is not kept";
}

TEST_F(ClosedGatesTest, CallbackOfAnEarlierPeriodIsWaitedFor) {
  Running former(mGates);
  Running own(mGates);
  EXPECT_LT(former.number, own.number);
  auto waiter = await(own.number);
  own.leave();
  EXPECT_TRUE(waits(waiter));
  former.leave();
  waiter.get();
}

TEST_F(ClosedGatesTest, CallbackOfALaterTimeIsNot) {
  Running own(mGates);
  Running later(mGates);
  auto waiter = await(own.number);
  EXPECT_TRUE(waits(waiter));
  own.leave();
  waiter.get();
  later.leave();
}

TEST_F(ClosedGatesTest, SeveralMayWaitForOneCallback) {
  Running former(mGates);
  Running own(mGates);
  auto one = await(former.number);
  auto other = await(own.number);
  own.leave();
  former.leave();
  one.get();
  other.get();
}

}  // namespace
