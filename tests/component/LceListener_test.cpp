// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
// The LCE object's listener, called directly with what the SDK client can tell it.
#include "../e2e/LceFixture.h"
#include "Lce.h"

namespace lcetest {
namespace {

using Status = SdkClientBase::SdkStatus;

const char* const kListener = "blobListener";

class LceListener : public LceTest {
 protected:
  // The enabled object, with both callbacks set.
  static std::shared_ptr<Service> object() { return Lce::mInstance().get(); }
  void enableQuietly() {
    enableBoth();
    settle();
    ASSERT_EQ(2u, waitForCalls(2).size());  // the marker's second call too
    recording::clear();
    clearCalls();
  }
};

TEST_F(LceListener, FailedSendIsAnInternalErrorToBoth) {
  enableQuietly();
  object()->blobListener(Status::SendFailed, {});
  EXPECT_EQ(calls(), (CallList{{"status", STATUS_INTERNAL_ERROR, {}},
                               {"v2", STATUS_V2_INTERNAL_ERROR, {}}}));
  EXPECT_EQ(lceLines(), (LceLines{{kListener, "Lce::blobListener"}}));
}

TEST_F(LceListener, ServiceDownIsToldToBoth) {
  enableQuietly();
  object()->blobListener(Status::ServiceDown, {});
  EXPECT_EQ(calls(),
            (CallList{{"status", STATUS_SERVICE_DOWN, {}}, {"v2", STATUS_V2_SERVICE_DOWN, {}}}));
  EXPECT_EQ(lceLines(), (LceLines{{kListener, "Lce::blobListener"}}));
}

TEST_F(LceListener, ServiceUpAndUnknownStatusesAreOnlyLogged) {
  enableQuietly();
  for (const int status : {3, 4, -1}) object()->blobListener(static_cast<Status>(status), {});
  EXPECT_TRUE(calls().empty());
  EXPECT_EQ(lceLines(), (LceLines{{kListener, "Lce::blobListener"},
                                  {kListener, "unknown internal status 3"},
                                  {kListener, "Lce::blobListener"},
                                  {kListener, "unknown internal status 4"},
                                  {kListener, "Lce::blobListener"},
                                  {kListener, "unknown internal status -1"}}));
}

TEST_F(LceListener, StatusCallbackMayDisable) {
  ASSERT_EQ(1, orb_lce_enable([](status_e status) {
              onStatus(status);
              CallLog::get().add({"disable", orb_lce_disable(), {}});
            }));
  ASSERT_TRUE(daemon().waitForFrames(1));
  object()->blobListener(Status::ServiceDown, {});
  EXPECT_EQ(calls(), (CallList{{"status", STATUS_SERVICE_DOWN, {}}, {"disable", 1, {}}}));
  EXPECT_EQ(nullptr, object());
  EXPECT_TRUE(waitForLceLine("~Lce", "~Lce called"));
}

TEST_F(LceListener, DisabledObjectCallsNobody) {
  enableQuietly();
  ASSERT_EQ(0, lceGetLastEstimationReport(onLast));
  const auto former = object();
  ASSERT_EQ(1, orb_lce_disable());
  former->blobListener(Status::ServiceDown, {});
  former->blobListener(Status::BlobReceived, serialise(statusInd(LceProto::SUCCESS)));
  former->blobListener(Status::BlobReceived, serialise(lastReport(1, 1, 1, 1, "NONE")));
  EXPECT_TRUE(calls().empty());
}

// Without enable: no callback is set, no client and no daemon is needed.
class LceObject : public ::testing::Test {
 protected:
  void SetUp() override {
    recording::clear();
    clearCalls();
  }
};

TEST_F(LceObject, LogsItsLife) {
  std::make_shared<Lce>();
  EXPECT_EQ(lceLines(), (LceLines{{"Lce", "Lce ctor"}, {"~Lce", "~Lce called"}}));
}

TEST_F(LceObject, WithoutCallbacksEverythingIsLoggedAndDropped) {
  Lce object;
  recording::clear();
  object.blobListener(Status::SendFailed, {});
  object.blobListener(Status::ServiceDown, {});
  object.blobListener(Status::BlobReceived, serialise(statusInd(LceProto::INVALID_SLOT)));
  object.blobListener(Status::BlobReceived, serialise(lastReport(1, 8, 2, 3, "")));
  object.blobListener(Status::BlobReceived, serialise(periodicReport(1, 7, 1, 3, "x")));
  object.blobListener(Status::BlobReceived, serialise(criteriaResult(4294967295, false, "")));
  std::vector<std::string> messages;
  for (const LceLine& line : lceLines()) {
    if (line.second != "Lce::blobListener") messages.push_back(line.second);
  }
  EXPECT_EQ(messages,
            (std::vector<std::string>{
                "STATUS_IND", "status_msg 8", "status 7", "GET_LAST_ESTIMATION_REPORT_IND",
                "GET_LAST_ESTIMATION_REPORT_IND rate: 1, confidenceLevel: 0, linkDirection: 0, "
                "queueSizeUL: 3, errorString: ",
                "mLastEstimationReportCb null", "ESTIMATION_REPORTS_IND",
                "ESTIMATION_REPORTS_IND rate: 1, confidenceLevel: 7, linkDirection: 1, "
                "queueSizeUL: 3, errorString: x",
                "mEstimationReportInd null", "SET_REPORTING_CRITERIA_ASYNC_RESULT",
                "SET_REPORTING_CRITERIA_ASYNC_RESULT transactionId: -1, success: 0, error: ",
                "no cb found"}));
  EXPECT_FALSE(recording::has("Unknown Status!")) << "nobody asks for the second number";
}

TEST_F(LceObject, HalfAMessageCountsForNothing) {
  Lce object;
  recording::clear();
  // An event number that is complete, then a member that is cut short.
  object.blobListener(Status::BlobReceived, {0x08, 0x03, 0x1a, 0x05, 0x22});
  EXPECT_EQ(lceLines(), (LceLines{{kListener, "Lce::blobListener"},
                                  {kListener, "STATUS_IND"},
                                  {kListener, "Status IND message data not filled"}}));
}

}  // namespace
}  // namespace lcetest
