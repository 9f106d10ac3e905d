// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
// The daemon's messages in the callbacks of the application and in the log.
#include "LceFixture.h"
#include "ServiceAnswersSuite.h"

namespace lcetest {
namespace {

INSTANTIATE_TYPED_TEST_SUITE_P(Lce, ServiceAnswers, LceNames, ServiceName);

class LceAnswers : public LceTest {};

TEST_F(LceAnswers, LastReportReachesItsCallbackWithAllValues) {
  enableQuietly();
  ASSERT_EQ(0, lceGetLastEstimationReport(onLast));
  send(lastReport(4000000000, 7, 1, 12, "NONE"));
  EXPECT_EQ(
      settle(),
      (CallList{
          {"last", 1, {4000000000, LCE_CONFIDENCE_LEVEL_L7, LCE_LINK_DIRECTION_DOWNLINK, 12}}}));
  EXPECT_EQ(listenerLines(),
            (LogLines{{kBlobListener, "Lce::blobListener"},
                      {kBlobListener, "GET_LAST_ESTIMATION_REPORT_IND"},
                      {kBlobListener,
                       "GET_LAST_ESTIMATION_REPORT_IND rate: -294967296, confidenceLevel: 7, "
                       "linkDirection: 1, queueSizeUL: 12, errorString: NONE"},
                      {kBlobListener, "mLastEstimationReportCb sent"}}));
}

TEST_F(LceAnswers, LastReportCallbackStaysAndIsReplacedByTheNext) {
  enableQuietly();
  ASSERT_EQ(0, lceGetLastEstimationReport(onLast));
  send(lastReport(1, 0, 0, 0, "NONE"));
  send(lastReport(2, 0, 0, 0, "NONE"));
  ASSERT_EQ(2u, waitForCalls(2).size());
  ASSERT_EQ(0, lceGetLastEstimationReport(onOtherLast));
  send(lastReport(3, 0, 0, 0, "NONE"));
  EXPECT_EQ(settle(), (CallList{{"last", 1, {1, {}, {}, 0}},
                                {"last", 1, {2, {}, {}, 0}},
                                {"otherLast", 1, {3, {}, {}, 0}}}));
}

TEST_F(LceAnswers, LastReportNobodyAskedForIsDropped) {
  enableQuietly();
  ASSERT_EQ(0, lceRegEstimationReports(onReport));
  send(lastReport(1, 2, 0, 4, "NONE"));
  EXPECT_TRUE(settle().empty());
  EXPECT_EQ(listenerLines(),
            (LogLines{{kBlobListener, "Lce::blobListener"},
                      {kBlobListener, "GET_LAST_ESTIMATION_REPORT_IND"},
                      {kBlobListener,
                       "GET_LAST_ESTIMATION_REPORT_IND rate: 1, confidenceLevel: 2, "
                       "linkDirection: 0, queueSizeUL: 4, errorString: NONE"},
                      {kBlobListener, "mLastEstimationReportCb null"}}));
}

TEST_F(LceAnswers, PeriodicReportReachesItsCallbackWithAllValues) {
  enableQuietly();
  ASSERT_EQ(0, lceRegEstimationReports(onReport));
  send(periodicReport(10, 3, 0, 4294967295, "NONE"));
  EXPECT_EQ(
      settle(),
      (CallList{
          {"report", 1, {10, LCE_CONFIDENCE_LEVEL_L3, LCE_LINK_DIRECTION_UPLINK, 4294967295}}}));
  EXPECT_EQ(listenerLines(),
            (LogLines{{kBlobListener, "Lce::blobListener"},
                      {kBlobListener, "ESTIMATION_REPORTS_IND"},
                      {kBlobListener,
                       "ESTIMATION_REPORTS_IND rate: 10, confidenceLevel: 3, linkDirection: 0, "
                       "queueSizeUL: -1, errorString: NONE"},
                      {kBlobListener, "mEstimationReportInd sent"}}));
}

TEST_F(LceAnswers, PeriodicReportWithoutCallbackIsDropped) {
  enableQuietly();
  send(periodicReport(10, 3, 0, 1, ""));
  EXPECT_TRUE(settle().empty());
  EXPECT_EQ(listenerLines(),
            (LogLines{{kBlobListener, "Lce::blobListener"},
                      {kBlobListener, "ESTIMATION_REPORTS_IND"},
                      {kBlobListener,
                       "ESTIMATION_REPORTS_IND rate: 10, confidenceLevel: 3, linkDirection: 0, "
                       "queueSizeUL: 1, errorString: "},
                      {kBlobListener, "mEstimationReportInd null"}}));
}

TEST_F(LceAnswers, ReportStatusComesFromTheErrorText) {
  enableQuietly();
  ASSERT_EQ(0, lceGetLastEstimationReport(onLast));
  ASSERT_EQ(0, lceRegEstimationReports(onReport));
  const std::vector<std::pair<std::string, int>> rows = {
      {"NONE", 1}, {"REPORTING_CRITERIA_NOT_SET", 2}, {"", 3}, {"none", 3}, {"NONE ", 3}};
  CallList expected;
  for (const auto& [error, status] : rows) {
    send(lastReport(1, 1, 1, 1, error));
    send(periodicReport(1, 1, 1, 1, error));
    const LceEstimationReport report{1, LCE_CONFIDENCE_LEVEL_L1, LCE_LINK_DIRECTION_DOWNLINK, 1};
    expected.push_back({"last", status, report});
    expected.push_back({"report", status, report});
  }
  EXPECT_EQ(settle(), expected);
}

TEST_F(LceAnswers, UnknownConfidenceAndDirectionReadAsZero) {
  enableQuietly();
  ASSERT_EQ(0, lceGetLastEstimationReport(onLast));
  CallList expected;
  for (const auto& [confidence, direction] :
       std::vector<std::pair<int, int>>{{0, 0}, {8, 2}, {-1, -1}, {2147483647, 2147483647}}) {
    send(lastReport(1, confidence, direction, 1, "NONE"));
    expected.push_back({"last", 1, {1, {}, {}, 1}});
  }
  EXPECT_EQ(settle(), expected);
}

TEST_F(LceAnswers, CriteriaStatusComesFromTheErrorTextNotFromSuccess) {
  enableQuietly();
  const std::vector<std::pair<std::string, int>> rows = {{"NONE", 1},
                                                         {"INVALID_ARGUMENTS", 2},
                                                         {"REPORTING_CRITERIA_TYPE_MISMATCH", 3},
                                                         {"", 4},
                                                         {"None", 4}};
  CallList expected;
  for (const bool success : {true, false}) {
    for (const auto& [error, status] : rows) {
      send(criteriaResult(static_cast<uint64_t>(setCriteria()), success, error));
      expected.push_back({"criteria", status, {}});
    }
  }
  EXPECT_EQ(settle(), expected);
}

TEST_F(LceAnswers, CriteriaAnswerIsDeliveredOnce) {
  enableQuietly();
  const auto id = static_cast<uint64_t>(setCriteria());
  send(criteriaResult(id, true, "NONE"));
  send(criteriaResult(id, false, "INVALID_ARGUMENTS"));
  EXPECT_EQ(settle(), (CallList{{"criteria", 1, {}}}));
  const std::string head =
      "SET_REPORTING_CRITERIA_ASYNC_RESULT transactionId: " + std::to_string(id) + ", success: ";
  EXPECT_EQ(listenerLines(), (LogLines{{kBlobListener, "Lce::blobListener"},
                                       {kBlobListener, "SET_REPORTING_CRITERIA_ASYNC_RESULT"},
                                       {kBlobListener, head + "1, error: NONE"},
                                       {kBlobListener, "Lce::blobListener"},
                                       {kBlobListener, "SET_REPORTING_CRITERIA_ASYNC_RESULT"},
                                       {kBlobListener, head + "0, error: INVALID_ARGUMENTS"},
                                       {kBlobListener, "no cb found"}}));
}

TEST_F(LceAnswers, CriteriaAnswerWithUnknownIdCallsNothing) {
  enableQuietly();
  send(criteriaResult(0, true, "NONE"));
  EXPECT_TRUE(settle().empty());
  EXPECT_EQ(listenerLines(),
            (LogLines{{kBlobListener, "Lce::blobListener"},
                      {kBlobListener, "SET_REPORTING_CRITERIA_ASYNC_RESULT"},
                      {kBlobListener,
                       "SET_REPORTING_CRITERIA_ASYNC_RESULT transactionId: 0, success: 1, "
                       "error: NONE"},
                      {kBlobListener, "no cb found"}}));
}

TEST_F(LceAnswers, TransactionIdIsTakenAs32Bits) {
  enableQuietly();
  const auto id = static_cast<uint64_t>(setCriteria());
  send(criteriaResult((uint64_t{1} << 32) + id, true, "NONE"));
  EXPECT_EQ(settle(), (CallList{{"criteria", 1, {}}}));
}

TEST_F(LceAnswers, AnswersToSeveralCriteriaRequestsMayComeInAnyOrder) {
  enableQuietly();
  const auto first = static_cast<uint64_t>(setCriteria());
  const auto second = static_cast<uint64_t>(setCriteria());
  send(criteriaResult(second, true, "NONE"));
  send(criteriaResult(first, false, "INVALID_ARGUMENTS"));
  EXPECT_EQ(settle(), (CallList{{"criteria", 1, {}}, {"criteria", 2, {}}}));
}

TEST_F(LceAnswers, BlobThatDoesNotParseReadsAsTheDefaultMessage) {
  enableQuietly();
  ASSERT_EQ(0, lceGetLastEstimationReport(onLast));
  Blob cut = serialise(lastReport(1, 1, 1, 1, "NONE"));
  cut.pop_back();
  const std::vector<Blob> blobs = {{}, {0xff, 0xff, 0xff}, {0x08}, {0x08, 0x01, 0x1a, 0x7f}, cut};
  LogLines expected;
  for (const Blob& blob : blobs) {
    sendRaw(blob);
    expected.emplace_back(kBlobListener, "Lce::blobListener");
    expected.emplace_back(kBlobListener, "STATUS_IND");
    expected.emplace_back(kBlobListener, "Status IND message data not filled");
  }
  EXPECT_TRUE(settle().empty());
  EXPECT_EQ(listenerLines(), expected);
}

TEST_F(LceAnswers, PercentSignsOfTheDaemonAreLoggedAsTheyCame) {
  enableQuietly();
  const std::string error = "100%% of %s %n %d%";
  const auto id = static_cast<uint64_t>(setCriteria());
  ASSERT_EQ(0, lceGetLastEstimationReport(onLast));
  send(lastReport(1, 0, 0, 0, error));
  send(periodicReport(1, 0, 0, 0, error));
  send(criteriaResult(id, true, error));
  EXPECT_EQ(2u, settle().size());
  size_t found = 0;
  for (const LogLine& line : listenerLines()) {
    const size_t at = line.message.find("rror");
    if (at == std::string::npos) continue;
    EXPECT_EQ(error, line.message.substr(line.message.find(": ", at) + 2));
    ++found;
  }
  EXPECT_EQ(3u, found);
}

TEST_F(LceAnswers, LongErrorTextIsCutAtAWholePercentPair) {
  enableQuietly();
  for (size_t size = 300; size < 304; ++size) send(lastReport(1, 0, 0, 0, std::string(size, '%')));
  for (size_t size = 600; size < 604; ++size) {
    send(lastReport(1, 0, 0, 0, std::string(size - 600, 'x') + std::string(size, '%')));
  }
  settle();
  size_t cut = 0;
  for (const LogLine& line : listenerLines()) {
    const size_t at = line.message.find("errorString: ");
    if (at == std::string::npos) continue;
    EXPECT_EQ(std::string::npos, line.message.find_first_not_of("%x", at + 13)) << line.message;
    ++cut;
  }
  EXPECT_EQ(8u, cut);
}

}  // namespace
}  // namespace lcetest
