// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
// Calls every exported function inside every callback, alone and while another thread calls the
// same function. The function returns, and everything can be disabled and enabled again.
#include <future>
#include <thread>

#include "AllServicesFixture.h"
#include "ReentryPlaces.h"
#include "Torture.h"
#include "WorkerAllocation.h"

namespace torture {
namespace {

using allservices::AllServicesTest;
using orbsim::Blob;

// Enough descriptors for an event manager, one too few for the SDK client's own queue.
constexpr size_t kManagerDescriptors = 3;

struct Tally {
  size_t places = 0;
  size_t calls = 0;
  size_t contended = 0;
};
Tally& tally() {
  static Tally instance;
  return instance;
}

class PrintTally : public ::testing::Environment {
  void TearDown() override {
    printf(
        "re-entry: %zu places x %zu functions: %zu calls inside a callback returned, %zu of "
        "them against another thread's\n",
        tally().places, functions().size(), tally().calls, tally().contended);
  }
};
const auto* const kPrintTally = ::testing::AddGlobalTestEnvironment(new PrintTally);

// Calls a function many times on its own thread, from begin() on, while the callback calls it once.
class Partner {
 public:
  explicit Partner(const Function& function) : mThread([this, &function] { run(function); }) {}
  // Inside the callback: returns when the other thread is about to call.
  void begin() {
    mBegin.set_value();
    mUnderWay.get_future().wait();
  }
  void join() { mThread.join(); }

 private:
  static constexpr int kCalls = 3;

  void run(const Function& function) {
    mBegin.get_future().wait();
    mUnderWay.set_value();
    for (int i = 0; i < kCalls; ++i) function.call(hearing());
  }
  std::promise<void> mBegin;
  std::promise<void> mUnderWay;
  std::thread mThread;
};

class Reentry : public AllServicesTest, public ::testing::WithParamInterface<Place> {
 protected:
  void TearDown() override {
    disableAll();
    Watchdog::stop();
    AllServicesTest::TearDown();
  }

  void enableBoth(Service service) {
    ASSERT_EQ(1, torture::enable(hearing(), service));
    ASSERT_EQ(0, torture::create(hearing(), service));
    awaitSession(allservices::kServices[service]);
  }
  // Enables and requests what the callbacks of this place need.
  void prepare(const Place& place) {
    switch (place.cause) {
      case Cause::Refusal:
        for (const Service service : {kLce, kLle, kLli}) {
          if (service == place.service) continue;
          ASSERT_NO_FATAL_FAILURE(enableBoth(service));
        }
        daemon().setHandshake([](int, uint32_t) { return false; });
        break;
      case Cause::Answer:
      case Cause::Loss:
      case Cause::SendFailure:
        for (const Service service : {kLce, kLle, kLli}) {
          ASSERT_NO_FATAL_FAILURE(enableBoth(service));
        }
        mCriteria = setCriteria(hearing().lceCriteria);
        ASSERT_GT(mCriteria, 0);
        ASSERT_EQ(0, lceGetLastEstimationReport(hearing().lceLast));
        ASSERT_EQ(0, lceRegEstimationReports(hearing().lceReport));
        ASSERT_EQ(0, lleGetLastEstimationReport(hearing().lleLast));
        ASSERT_EQ(0, lleRegEstimationReports(hearing().lleReport));
        ASSERT_EQ(0, lliRegLinkInterruptInd(hearing().lliInterrupt));
        ASSERT_TRUE(daemon().waitForFrames(10));
        break;
      default:
        break;  // these causes need that nothing is enabled
    }
  }
  void provoke(const Place& place, const std::function<void()>& arm) {
    switch (place.cause) {
      case Cause::Answer:
        arm();
        send(allservices::kServices[place.service], answerFor(place.slot));
        break;
      case Cause::Loss:
        arm();
        ASSERT_TRUE(daemon().closeSession(sessionOf(place.service)));
        break;
      case Cause::Refusal:
        arm();
        if (place.slot >= kStatusV2) {
          ASSERT_EQ(0, torture::create(hearing(), place.service));
        } else {
          ASSERT_EQ(1, torture::enable(hearing(), place.service));
        }
        break;
      case Cause::SendFailure:
        provokeSendFailure(place, arm);
        return;
      default:
        provokeFailedCall(place, arm);
        return;
    }
    awaitDone();
  }
  // The connection ends after the worker has checked it and before the worker sends.
  void provokeSendFailure(const Place& place, const std::function<void()>& arm) {
    arm();
    const WorkerAllocation moment([&] {
      daemon().closeSession(sessionOf(place.service));
      awaitHeard(slotOf(kStatus, place.service), STATUS_SERVICE_DOWN);
    });
    ASSERT_EQ(0, torture::request(hearing(), place.service));
    awaitDone();
  }
  // This call also fails while the other thread makes its attempts.
  void provokeFailedCall(const Place& place, const std::function<void()>& arm) {
    const FewDescriptors few(kManagerDescriptors);
    const auto due = [&](Cause cause) {
      if (place.cause == cause) arm();
    };
    due(Cause::FailedEnable);
    EXPECT_EQ(0, torture::enable(hearing(), place.service));
    due(Cause::FailedCreate);
    EXPECT_EQ(-1, torture::create(hearing(), place.service));
    due(Cause::FailedDisable);
    EXPECT_EQ(0, torture::disable(place.service));
    due(Cause::FailedDestroy);
    EXPECT_EQ(-1, torture::destroy(place.service));
    awaitDone();
  }
  Blob answerFor(Slot slot) {
    switch (slot) {
      case kLceCriteriaCb:
        return servicetest::serialise(
            lcetest::criteriaResult(static_cast<uint64_t>(mCriteria), true, "NONE"));
      case kLceLastCb:
        return servicetest::serialise(lcetest::lastReport(1, 1, 1, 1, "NONE"));
      case kLceReportCb:
        return servicetest::serialise(lcetest::periodicReport(1, 1, 1, 1, "NONE"));
      case kLleLastCb:
        return servicetest::serialise(lletest::lastReport({true, 1, 1, 1, 1, 1, 1, 1, 2}));
      case kLleReportCb:
        return servicetest::serialise(lletest::periodicReport({true, 1, 1, 1, 1, 1, 1, 1, 2}));
      case kLliInterruptCb:
        return servicetest::serialise(llitest::indication({1, 0, 3, 6, 1, 1}));
      default:
        return status(1);
    }
  }
  uint32_t sessionOf(Service service) { return mSessions.at(allservices::kServices[service].name); }
  // Disables what callbacks and the partner have enabled, and waits until nothing of it is left.
  void disableAll() {
    for (const Service service : {kLce, kLle, kLli}) {
      while (torture::disable(service) == 1) {
      }
    }
    EXPECT_TRUE(libraryThreadsEnd());
    daemon().setHandshake({});
    // No frame of this round must be taken for one of the next.
    EXPECT_TRUE(daemon().waitForConnectionsClosed(daemon().totals().connections));
    daemon().clearRecords();
    recording::clear();
  }

  // Calls one function inside one callback. The next prepare() shows that services can be enabled
  // again.
  void callInside(const Place& place, const Function& function, bool contended) {
    Watchdog::step("%s inside %s, %s", function.name, place.name.c_str(),
                   contended ? "against another thread" : "alone");
    ASSERT_NO_FATAL_FAILURE(prepare(place));
    std::unique_ptr<Partner> partner;
    std::string thread;
    if (contended) partner = std::make_unique<Partner>(function);
    ASSERT_NO_FATAL_FAILURE(provoke(place, [&] {
      arm(place.slot, place.value, [&] {
        thread = threadName();
        if (partner) partner->begin();
        function.call(hearing());
      });
    }));
    awaitDone();
    EXPECT_EQ(place.thread, thread) << function.name;
    if (partner) partner->join();
    disableAll();
    ++tally().calls;
    if (contended) ++tally().contended;
  }

  int64_t mCriteria = 0;
};

TEST_P(Reentry, EveryFunctionReturns) {
  ++tally().places;
  for (uint64_t round = 0; round < countOr(1); ++round) {
    for (const Function& function : functions()) {
      for (const bool contended : {false, true}) {
        ASSERT_NO_FATAL_FAILURE(callInside(GetParam(), function, contended));
      }
    }
  }
  Watchdog::step("enabling again after %s", GetParam().name.c_str());
  for (const Service service : {kLce, kLle, kLli}) {
    ASSERT_NO_FATAL_FAILURE(enable(allservices::kServices[service]));
    expectHearsJustThis(allservices::kServices[service]);
  }
}

INSTANTIATE_TEST_SUITE_P(Inside, Reentry, ::testing::ValuesIn(places()),
                         [](const auto& place) { return place.param.name; });

}  // namespace
}  // namespace torture
