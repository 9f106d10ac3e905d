// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
// Enabling and disabling without memory in the library, at one allocation of the calling thread
// after the other.
#include <ostream>

#include "OutOfMemoryFixture.h"

namespace allservices {
namespace {

using application::state;
using memory::Caller;

// How a service is opened, and which other service is open.
struct Opening {
  const ServiceOps& service;
  bool secondGeneration;
  const ServiceOps* beside;

  int open() const { return secondGeneration ? service.create() : service.enable(); }
  int opened() const { return secondGeneration ? 0 : 1; }
  int refused() const { return secondGeneration ? -1 : 0; }
  std::string name() const {
    return std::string(secondGeneration ? "create" : "enable") + service.name +
           (beside != nullptr ? "Beside" + std::string(beside->name) : "Alone");
  }
  friend std::ostream& operator<<(std::ostream& out, const Opening& opening) {
    return out << opening.name();
  }
};

std::vector<Opening> openings() {
  std::vector<Opening> all;
  for (const bool secondGeneration : {false, true}) {
    for (const ServiceOps& service : {std::cref(kLce), std::cref(kLle), std::cref(kLli)}) {
      const ServiceOps& other = &service == &kLce ? kLle : kLce;
      all.push_back({service, secondGeneration, nullptr});
      all.push_back({service, secondGeneration, &other});
    }
  }
  return all;
}

class OpeningOutOfMemory : public OutOfMemoryTest, public ::testing::WithParamInterface<Opening> {
 protected:
  // The callback is notified of a refused enable; of a refused create only if the client was not
  // requested.
  void expectTold() {
    const ServiceOps& service = GetParam().service;
    if (!GetParam().secondGeneration) {
      EXPECT_EQ(service.waitForCalls(1), Statuses{STATUS_INTERNAL_ERROR});
    } else if (!service.waitForCalls(0).empty()) {
      EXPECT_EQ(service.waitForCalls(1), Statuses{STATUS_V2_INTERNAL_ERROR});
    }
    service.clearCalls();
  }
  void expectHears() {
    const ServiceOps& service = GetParam().service;
    service.clearCalls();
    send(service, status(4));
    const int value =
        GetParam().secondGeneration ? int{STATUS_V2_NOT_SUPPORTED} : int{STATUS_NOT_SUPPORTED};
    EXPECT_EQ(service.waitForCalls(1), Statuses{value});
  }
};

TEST_P(OpeningOutOfMemory, IsRefusedWithoutATraceUntilItWorks) {
  const Opening& opening = GetParam();
  if (opening.beside != nullptr) {
    ASSERT_NO_FATAL_FAILURE(enable(*opening.beside));
  }
  int result = -100;
  const size_t failed = memory::failEach(
      Caller::Library, [&] { result = opening.open(); },
      [&](size_t nth) {
        SCOPED_TRACE(nth);
        EXPECT_EQ(opening.refused(), result);
        expectTold();
        EXPECT_EQ(-5, opening.service.requests().front().valid());
        if (opening.beside != nullptr) {
          expectHearsJustThis(*opening.beside);
        } else {
          expectNothingLeft();
        }
      });
  print(opening.name().c_str(), opening.service, failed);
  EXPECT_EQ(opening.opened(), result);
  awaitSession(opening.service);
  expectSent(opening.service);
  expectHears();
  if (opening.beside != nullptr) {
    expectEnabled(*opening.beside);
    disable(*opening.beside);
  }
  disable(opening.service);
  expectNothingLeft();
}

INSTANTIATE_TEST_SUITE_P(All, OpeningOutOfMemory, ::testing::ValuesIn(openings()),
                         [](const auto& opening) { return opening.param.name(); });

class OutOfMemory : public OutOfMemoryTest {};

TEST_F(OutOfMemory, RefusedEnableLeavesTheFormerCallbackInItsPlace) {
  for (const ServiceOps& service : kServices) {
    ASSERT_NO_FATAL_FAILURE(enable(service));
    int result = -100;
    const size_t failed = memory::failEach(
        Caller::Library, [&] { result = service.enableWith(application::onStatus); },
        [&](size_t nth) {
          SCOPED_TRACE(nth);
          EXPECT_EQ(0, result);
          EXPECT_TRUE(state().waitFor(application::Event::Status, STATUS_INTERNAL_ERROR));
          expectHearsJustThis(service);
        });
    print("enable with another callback", service, failed);
    EXPECT_EQ(1, result);
    disable(service);
  }
}

TEST_F(OutOfMemory, RegisteringForReportsNeedsNone) {
  ASSERT_NO_FATAL_FAILURE(enableAll());
  const memory::FailingNew failing(0, Caller::Library);
  EXPECT_EQ(0, lceRegEstimationReports(application::onReport));
  EXPECT_EQ(0, lleRegEstimationReports([](int32_t, const LleEstimationReport*) {}));
  EXPECT_FALSE(failing.failed());
}

// No memory at all for the library on this thread.
int disableWithoutMemory(const ServiceOps& service) {
  const memory::FailingNew failing(0, Caller::Library);
  const int result = service.disable();
  EXPECT_FALSE(failing.failed());
  return result;
}

TEST_F(OutOfMemory, DisableNeedsNone) {
  for (const ServiceOps& service : kServices) {
    ASSERT_NO_FATAL_FAILURE(enable(service));
    EXPECT_EQ(1, disableWithoutMemory(service));
    expectNothingLeft();
    expectDisabled(service);
  }
}

TEST_F(OutOfMemory, DisableOfOneLeavesTheOthersAlone) {
  ASSERT_NO_FATAL_FAILURE(enableAll());
  EXPECT_EQ(1, disableWithoutMemory(kLle));
  expectHearsJustThis(kLce);
  expectHearsJustThis(kLli);
}

TEST_F(OutOfMemory, DisableInsideACallbackIsFinishedByTheLibrary) {
  for (const ServiceOps& service : kServices) {
    size_t nth = 0;
    for (bool failed = true; failed; ++nth) {
      SCOPED_TRACE(nth);
      state().clear();
      ASSERT_EQ(1, service.enableWith(application::onStatus));
      awaitSession(service);
      int result = -100;
      state().inNext(application::Event::Status, [&] {
        {
          const memory::FailingNew failing(nth, Caller::Library);
          result = service.disable();
          failed = failing.failed();
        }
      });
      send(service, status(1));
      ASSERT_TRUE(state().waitDone());
      ASSERT_EQ(1, result);
      expectNothingLeft();
      EXPECT_EQ(0, service.disable());
      if (HasFailure()) return;
    }
    EXPECT_EQ(1u, nth) << service.name
                       << ": it takes no memory; its thread starts after the callback";
  }
}

}  // namespace
}  // namespace allservices
