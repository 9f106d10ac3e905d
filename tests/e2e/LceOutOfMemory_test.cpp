// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
// Requests without memory in the library, at one allocation after the other.
#include <cstdio>

#include "FailingNew.h"
#include "LceFixture.h"

namespace lcetest {
namespace {

class LceOutOfMemory : public LceTest {
 protected:
  static constexpr int64_t kRefused = -5;
  static constexpr size_t kManagerDescriptors = 3;  // too few for the client

  // Calls @p request with its first allocation failing, then with its second, and so on until none
  // fails. All calls except the last are refused, and @p look checks the state after each. Returns
  // the result of the last call.
  template <class Request, class Look>
  static int64_t failEach(const Request& request, const Look& look) {
    int64_t result = 0;
    const size_t failed = memory::failEach(
        memory::Caller::Library, [&] { result = request(); },
        [&](size_t allocation) {
          EXPECT_EQ(kRefused, result) << "allocation " << allocation;
          look();
        });
    std::printf("%zu allocations failed\n", failed);
    EXPECT_GT(failed, 0u);
    return result;
  }
  template <class Request>
  static int64_t failEach(const Request& request) {
    return failEach(request, [] {});
  }
};

TEST_F(LceOutOfMemory, RefusedRequestIsNotSentAndTheNextOneIs) {
  enableQuietly();
  LceReportingCriteria criteria = {};
  criteria.firstListCount = LCE_REPORTING_CRITERIA_LIST_MAX;
  const int64_t id = failEach([&] { return lceSetReportingCriteria(&criteria, onCriteria); });
  EXPECT_GT(id, 0);
  EXPECT_EQ(0, failEach([] { return lcePerformReportingAction(LCE_REPORTING_ACTION_START); }));
  EXPECT_EQ(0, failEach([] { return lceGetLastEstimationReport(onLast); }));
  send(criteriaResult(static_cast<uint64_t>(id), true, "NONE"));
  EXPECT_EQ(settle(), CallList({{"criteria", LCE_REPORTING_CRITERIA_STATUS_SUCCESS, {}}}));
  ASSERT_TRUE(daemon().waitForFrames(4));
  orb_lce_disable();
  ASSERT_TRUE(daemon().waitForSessionsClosed(1));
  EXPECT_EQ(5u, daemon().frames().size()) << "enable, three requests, disable";
}

TEST_F(LceOutOfMemory, WithoutClientThatIsTheReasonAllTheSame) {
  {
    const FewDescriptors few(kManagerDescriptors);
    ASSERT_EQ(0, orb_lce_enable(onStatus));
  }
  for (const Request& request : LceNames::requests()) {
    forgetAll();
    int64_t result = 0;
    {
      const memory::NoMemory none;
      result = request.valid();
    }
    EXPECT_EQ(kRefused, result) << request.function;
    EXPECT_EQ(lines(), (LogLines{{request.function, "Failed to get SDK client instance"}}));
  }
  enable();  // creates the object's client, so that it ends with the test
}

TEST_F(LceOutOfMemory, RefusedRequestLeavesTheFormerCallbackInItsPlace) {
  enableQuietly();
  ASSERT_EQ(0, lceGetLastEstimationReport(onLast));
  failEach([] { return lceGetLastEstimationReport(onOtherLast); },
           [this] {
             clearCalls();
             send(lastReport(1, 0, 0, 0, "NONE"));
             EXPECT_EQ(settle(), CallList({{"last", 1, {1, {}, {}, 0}}}));
           });
}

}  // namespace
}  // namespace lcetest
