// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
// What the daemon sends, as the application's callbacks and the log show it.
#include <algorithm>

#include "LceFixture.h"

namespace lcetest {
namespace {

class LceAnswers : public LceTest {
 protected:
  void enableQuietly() {
    enable();
    settle();
    recording::clear();
    clearCalls();
  }
};

const char* const kListener = "blobListener";

// The listener's lines from the first one after the last clear() up to the marker of settle().
LceLines listenerLines() {
  LceLines lines = lceLinesOf(kListener);
  const LceLines marker{{kListener, "Lce::blobListener"},
                        {kListener, "STATUS_IND"},
                        {kListener, "status_msg 4"},
                        {kListener, "status 3"}};
  const auto end = std::search(lines.begin(), lines.end(), marker.begin(), marker.end());
  EXPECT_NE(lines.end(), end);
  lines.erase(end, lines.end());
  return lines;
}

struct StatusRow {
  int proto;
  status_e status;
  status_v2_e v2;
};

class LceStatus : public LceTest, public ::testing::WithParamInterface<StatusRow> {};

TEST_P(LceStatus, ReachesBothCallbacksFirstGenerationFirst) {
  const StatusRow row = GetParam();
  enableBoth();
  send(statusInd(row.proto));
  EXPECT_EQ(waitForCalls(2), (CallList{{"status", row.status, {}}, {"v2", row.v2, {}}}));
  const LceLines lines = lceLinesOf(kListener);
  ASSERT_GE(lines.size(), 4u);
  EXPECT_EQ(LceLines(lines.end() - 4, lines.end()),
            (LceLines{{kListener, "Lce::blobListener"},
                      {kListener, "STATUS_IND"},
                      {kListener, "status_msg " + std::to_string(row.proto)},
                      {kListener, "status " + std::to_string(row.status)}}));
  size_t withoutNumber = 0;
  size_t outOfRange = 0;
  for (const recording::Line& line : recording::lines()) {
    if (line.text == "Unknown Status!" && line.priority == 6 && !line.hasTag) ++withoutNumber;
    if (line.text.find("|OrbSdk|ClientLceUtils::protoStatusToClient:") == 0 &&
        line.text.find(" Unknown Status!") != std::string::npos) {
      EXPECT_EQ(3, line.priority);
      EXPECT_FALSE(line.hasTag);
      ++outOfRange;
    }
  }
  EXPECT_EQ(row.proto == LceProto::INVALID_SLOT ? 1u : 0u, withoutNumber);
  EXPECT_EQ(row.proto > LceProto::RESERVED ? 1u : 0u, outOfRange);
}

INSTANTIATE_TEST_SUITE_P(
    EveryNumber, LceStatus,
    ::testing::Values(StatusRow{0, STATUS_INVALID, STATUS_V2_INVALID},
                      StatusRow{1, STATUS_SUCCESS, STATUS_V2_SUCCESS},
                      StatusRow{2, STATUS_INVALID_ARG, STATUS_V2_INVALID_ARG},
                      StatusRow{3, STATUS_INTERNAL_ERROR, STATUS_V2_INTERNAL_ERROR},
                      StatusRow{4, STATUS_NOT_SUPPORTED, STATUS_V2_NOT_SUPPORTED},
                      StatusRow{5, STATUS_INVALID_OPERATION, STATUS_V2_INVALID_OPERATION},
                      StatusRow{6, STATUS_SERVICE_UP, STATUS_V2_SERVICE_UP},
                      StatusRow{7, STATUS_SERVICE_DOWN, STATUS_V2_SERVICE_DOWN},
                      StatusRow{8, STATUS_INVALID_SLOT, STATUS_V2_INVALID},
                      StatusRow{9, STATUS_RESERVED, STATUS_V2_RESERVED},
                      StatusRow{10, STATUS_INVALID, STATUS_V2_INVALID},
                      StatusRow{11, STATUS_INVALID, STATUS_V2_INVALID},
                      StatusRow{12, STATUS_INVALID, STATUS_V2_INVALID}),
    [](const auto& row) { return std::to_string(row.param.proto); });

TEST_F(LceAnswers, StatusReachesTheSecondGenerationAlone) {
  ASSERT_EQ(0, createLceClient(onV2));
  ASSERT_TRUE(daemon().waitForFrames(1));
  send(statusInd(LceProto::SERVICE_UP));
  EXPECT_EQ(waitForCalls(1), (CallList{{"v2", -7, {}}}));
}

TEST_F(LceAnswers, InternalServiceUpReachesNoCallback) {
  enable();
  EXPECT_TRUE(settle().empty());
  const LceLines lines = listenerLines();
  EXPECT_EQ(lines,
            (LceLines{{kListener, "Lce::blobListener"}, {kListener, "unknown internal status 3"}}));
}

TEST_F(LceAnswers, LastReportReachesItsCallbackWithAllValues) {
  enableQuietly();
  ASSERT_EQ(0, lceGetLastEstimationReport(onLast));
  send(lastReport(4000000000, 7, 1, 12, "NONE"));
  EXPECT_EQ(
      settle(),
      (CallList{
          {"last", 1, {4000000000, LCE_CONFIDENCE_LEVEL_L7, LCE_LINK_DIRECTION_DOWNLINK, 12}}}));
  EXPECT_EQ(listenerLines(),
            (LceLines{{kListener, "Lce::blobListener"},
                      {kListener, "GET_LAST_ESTIMATION_REPORT_IND"},
                      {kListener,
                       "GET_LAST_ESTIMATION_REPORT_IND rate: -294967296, confidenceLevel: 7, "
                       "linkDirection: 1, queueSizeUL: 12, errorString: NONE"},
                      {kListener, "mLastEstimationReportCb sent"}}));
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
            (LceLines{{kListener, "Lce::blobListener"},
                      {kListener, "GET_LAST_ESTIMATION_REPORT_IND"},
                      {kListener,
                       "GET_LAST_ESTIMATION_REPORT_IND rate: 1, confidenceLevel: 2, "
                       "linkDirection: 0, queueSizeUL: 4, errorString: NONE"},
                      {kListener, "mLastEstimationReportCb null"}}));
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
            (LceLines{{kListener, "Lce::blobListener"},
                      {kListener, "ESTIMATION_REPORTS_IND"},
                      {kListener,
                       "ESTIMATION_REPORTS_IND rate: 10, confidenceLevel: 3, linkDirection: 0, "
                       "queueSizeUL: -1, errorString: NONE"},
                      {kListener, "mEstimationReportInd sent"}}));
}

TEST_F(LceAnswers, PeriodicReportWithoutCallbackIsDropped) {
  enableQuietly();
  send(periodicReport(10, 3, 0, 1, ""));
  EXPECT_TRUE(settle().empty());
  EXPECT_EQ(listenerLines(),
            (LceLines{{kListener, "Lce::blobListener"},
                      {kListener, "ESTIMATION_REPORTS_IND"},
                      {kListener,
                       "ESTIMATION_REPORTS_IND rate: 10, confidenceLevel: 3, linkDirection: 0, "
                       "queueSizeUL: 1, errorString: "},
                      {kListener, "mEstimationReportInd null"}}));
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
  EXPECT_EQ(listenerLines(), (LceLines{{kListener, "Lce::blobListener"},
                                       {kListener, "SET_REPORTING_CRITERIA_ASYNC_RESULT"},
                                       {kListener, head + "1, error: NONE"},
                                       {kListener, "Lce::blobListener"},
                                       {kListener, "SET_REPORTING_CRITERIA_ASYNC_RESULT"},
                                       {kListener, head + "0, error: INVALID_ARGUMENTS"},
                                       {kListener, "no cb found"}}));
}

TEST_F(LceAnswers, CriteriaAnswerWithUnknownIdCallsNothing) {
  enableQuietly();
  send(criteriaResult(0, true, "NONE"));
  EXPECT_TRUE(settle().empty());
  EXPECT_EQ(listenerLines(),
            (LceLines{{kListener, "Lce::blobListener"},
                      {kListener, "SET_REPORTING_CRITERIA_ASYNC_RESULT"},
                      {kListener,
                       "SET_REPORTING_CRITERIA_ASYNC_RESULT transactionId: 0, success: 1, "
                       "error: NONE"},
                      {kListener, "no cb found"}}));
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

TEST_F(LceAnswers, WrongMemberIsDroppedWithTheDocumentedLine) {
  enableQuietly();
  ASSERT_EQ(0, lceGetLastEstimationReport(onLast));
  ASSERT_EQ(0, lceRegEstimationReports(onReport));
  const std::vector<std::pair<int, std::vector<std::string>>> rows = {
      {0, {"STATUS_IND", "Status IND message data not filled"}},
      {1,
       {"GET_LAST_ESTIMATION_REPORT_IND",
        "GET_LAST_ESTIMATION_REPORT_IND message data not filled"}},
      {2, {"ESTIMATION_REPORTS_IND", "GET_LAST_ESTIMATION_REPORT_IND message data not filled"}},
      {3,
       {"SET_REPORTING_CRITERIA_ASYNC_RESULT",
        "SET_REPORTING_CRITERIA_ASYNC_RESULT message data not filled"}}};
  LceLines expected;
  for (const auto& [event, texts] : rows) {
    LceProto::ClientMsg message;
    message.set_event_id(static_cast<LceProto::ClientEventId>(event));
    send(message);  // no member at all
    if (event == LceProto::STATUS_IND) {
      fill(message.mutable_data()->mutable_estimation_reports_resp(), 1, 1, 1, 1, "NONE");
    } else {
      message.mutable_data()->mutable_status_msg()->set_status(LceProto::SUCCESS);
    }
    send(message);  // another one's
    for (int i = 0; i < 2; ++i) {
      expected.emplace_back(kListener, "Lce::blobListener");
      for (const std::string& text : texts) expected.emplace_back(kListener, text);
    }
  }
  EXPECT_TRUE(settle().empty());
  EXPECT_EQ(listenerLines(), expected);
}

TEST_F(LceAnswers, UnknownEventIsDropped) {
  enableQuietly();
  LceProto::ClientMsg message = statusInd(LceProto::SUCCESS);
  for (const int event : {4, 100, -1}) {
    message.set_event_id(static_cast<LceProto::ClientEventId>(event));
    send(message);
  }
  EXPECT_TRUE(settle().empty());
  LceLines expected;
  for (int i = 0; i < 3; ++i) {
    expected.emplace_back(kListener, "Lce::blobListener");
    expected.emplace_back(kListener, "Unknown message type");
  }
  EXPECT_EQ(listenerLines(), expected);
}

TEST_F(LceAnswers, BlobThatDoesNotParseReadsAsTheDefaultMessage) {
  enableQuietly();
  ASSERT_EQ(0, lceGetLastEstimationReport(onLast));
  Blob cut = serialise(lastReport(1, 1, 1, 1, "NONE"));
  cut.pop_back();
  const std::vector<Blob> blobs = {{}, {0xff, 0xff, 0xff}, {0x08}, {0x08, 0x01, 0x1a, 0x7f}, cut};
  LceLines expected;
  for (const Blob& blob : blobs) {
    sendRaw(blob);
    expected.emplace_back(kListener, "Lce::blobListener");
    expected.emplace_back(kListener, "STATUS_IND");
    expected.emplace_back(kListener, "Status IND message data not filled");
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
  for (const LceLine& line : listenerLines()) {
    const size_t at = line.second.find("rror");
    if (at == std::string::npos) continue;
    EXPECT_EQ(error, line.second.substr(line.second.find(": ", at) + 2));
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
  for (const LceLine& line : listenerLines()) {
    const size_t at = line.second.find("errorString: ");
    if (at == std::string::npos) continue;
    EXPECT_EQ(std::string::npos, line.second.find_first_not_of("%x", at + 13)) << line.second;
    ++cut;
  }
  EXPECT_EQ(8u, cut);
}

}  // namespace
}  // namespace lcetest
