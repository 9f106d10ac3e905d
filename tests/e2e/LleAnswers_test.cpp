// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
// The daemon's messages to LLE in the callbacks of the application and in the log.
#include "LleFixture.h"
#include "ServiceAnswersSuite.h"

namespace lletest {
namespace {

INSTANTIATE_TYPED_TEST_SUITE_P(Lle, ServiceAnswers, LleNames, ServiceName);

constexpr uint64_t kAbove32Bits = (uint64_t{1} << 32) + 5;
constexpr uint64_t kLargest = UINT64_MAX;

// The daemon's estimate, and the resulting record and line.
struct ReportRow {
  Estimate estimate;
  LleEstimationReport report;
  const char* line;
};

const ReportRow kRows[] = {
    // Estimates above 32 bits are complete in the record and truncated in the line.
    {{true, 1, kAbove32Bits, kLargest, 2, kAbove32Bits << 1, kLargest - 1, 1, LleProto::LTE},
     {1, kAbove32Bits, kLargest, 2, kAbove32Bits << 1, kLargest - 1, 1,
      SDL_ACCESS_NETWORK_TYPE_LTE},
     "status: 1, ulReportStatus: 1, ulLatencyEstimation: 5, ulVarianceEstimation: -1, "
     "dlReportStatus: 2, dlLatencyEstimation: 10, dlVarianceEstimation: -2, reportInterval: 1, "
     "rat: 2"},
    // The line's values are signed, statuses have 8 bits, an interval is there or not.
    {{false, 255, 2147483648, 4294967295, 256, 4294967296, 2147483647, 1000, LleProto::NR5G},
     {255, 2147483648, 4294967295, 0, 4294967296, 2147483647, 1, SDL_ACCESS_NETWORK_TYPE_NR5G},
     "status: 0, ulReportStatus: 255, ulLatencyEstimation: -2147483648, ulVarianceEstimation: -1, "
     "dlReportStatus: 0, dlLatencyEstimation: 0, dlVarianceEstimation: 2147483647, "
     "reportInterval: 1, rat: 3"},
    {{true, 257, 0, 0, 4294967295, 0, 0, 4294967295, LleProto::WCDMA},
     {1, 0, 0, 255, 0, 0, 1, SDL_ACCESS_NETWORK_TYPE_WCDMA},
     "status: 1, ulReportStatus: 1, ulLatencyEstimation: 0, ulVarianceEstimation: 0, "
     "dlReportStatus: 255, dlLatencyEstimation: 0, dlVarianceEstimation: 0, reportInterval: 1, "
     "rat: 1"},
    // Nothing is set: an absent technology is the first one.
    {{false, 0, 0, 0, 0, 0, 0, 0, 0},
     {0, 0, 0, 0, 0, 0, 0, SDL_ACCESS_NETWORK_TYPE_WCDMA},
     "status: 0, ulReportStatus: 0, ulLatencyEstimation: 0, ulVarianceEstimation: 0, "
     "dlReportStatus: 0, dlLatencyEstimation: 0, dlVarianceEstimation: 0, reportInterval: 0, "
     "rat: 1"},
    // Unknown technologies.
    {{true, 0, 0, 0, 0, 0, 0, 0, 3},
     {0, 0, 0, 0, 0, 0, 0, SDL_ACCESS_NETWORK_TYPE_NONE},
     "status: 1, ulReportStatus: 0, ulLatencyEstimation: 0, ulVarianceEstimation: 0, "
     "dlReportStatus: 0, dlLatencyEstimation: 0, dlVarianceEstimation: 0, reportInterval: 0, "
     "rat: 0"},
    {{true, 0, 0, 0, 0, 0, 0, 0, -1},
     {0, 0, 0, 0, 0, 0, 0, SDL_ACCESS_NETWORK_TYPE_NONE},
     "status: 1, ulReportStatus: 0, ulLatencyEstimation: 0, ulVarianceEstimation: 0, "
     "dlReportStatus: 0, dlLatencyEstimation: 0, dlVarianceEstimation: 0, reportInterval: 0, "
     "rat: 0"},
};

class LleAnswers : public LleTest {
 protected:
  static LogLine at(int number, const std::string& text) { return {kBlobListener, number, text}; }
};

TEST_F(LleAnswers, AnswerSaysInItsResultWhetherItIsValid) {
  enableQuietly();
  ASSERT_EQ(0, lleGetLastEstimationReport(onLast));
  ASSERT_EQ(0, lleRegEstimationReports(onReport));
  CallList expected;
  LogLines lines;
  for (const ReportRow& row : kRows) {
    send(lastReport(row.estimate));
    expected.push_back({"last", row.estimate.status ? 0 : 1, row.report});
    lines.push_back(at(240, "Lle::blobListener"));
    lines.push_back(at(261, "GET_REPORT_RESP"));
    lines.push_back(at(278, std::string("GET_REPORT_RESP ") + row.line));
    lines.push_back(at(303, "GET_REPORT_RESP cb sent"));
  }
  EXPECT_EQ(settle(), expected);
  EXPECT_EQ(listenerLines(), lines);
}

TEST_F(LleAnswers, IndicationIsAlwaysPassedOnAsValid) {
  enableQuietly();
  ASSERT_EQ(0, lleGetLastEstimationReport(onLast));
  ASSERT_EQ(0, lleRegEstimationReports(onReport));
  CallList expected;
  LogLines lines;
  for (const ReportRow& row : kRows) {
    send(periodicReport(row.estimate));
    expected.push_back({"report", 0, row.report});
    lines.push_back(at(240, "Lle::blobListener"));
    lines.push_back(at(312, "IND_REPORT_RESP"));
    lines.push_back(at(329, std::string("IND_REPORT_RESP ") + row.line));
    lines.push_back(at(350, "IND_REPORT_RESP cb sent"));
  }
  EXPECT_EQ(settle(), expected);
  EXPECT_EQ(listenerLines(), lines);
}

TEST_F(LleAnswers, AnswerNobodyAskedForIsDropped) {
  enableQuietly();
  ASSERT_EQ(0, lleRegEstimationReports(onReport));
  send(lastReport(kRows[0].estimate));
  EXPECT_TRUE(settle().empty());
  EXPECT_EQ(listenerLines(), (LogLines{at(240, "Lle::blobListener"), at(261, "GET_REPORT_RESP"),
                                       at(278, std::string("GET_REPORT_RESP ") + kRows[0].line),
                                       at(305, "mLastEstimationReportCb null")}));
}

TEST_F(LleAnswers, IndicationWithoutCallbackIsDropped) {
  enableQuietly();
  ASSERT_EQ(0, lleGetLastEstimationReport(onLast));
  send(periodicReport(kRows[1].estimate));
  EXPECT_TRUE(settle().empty());
  EXPECT_EQ(listenerLines(), (LogLines{at(240, "Lle::blobListener"), at(312, "IND_REPORT_RESP"),
                                       at(329, std::string("IND_REPORT_RESP ") + kRows[1].line),
                                       at(352, "mEstimationReportInd null")}));
}

TEST_F(LleAnswers, MissingMembersAreNamedAtTheirLines) {
  enableQuietly();
  for (const uint8_t event : Blob{0, 1, 2}) sendRaw({0x08, event});
  EXPECT_TRUE(settle().empty());
  EXPECT_EQ(listenerLines(), (LogLines{at(240, "Lle::blobListener"), at(249, "STATUS_IND"),
                                       at(257, "Status IND message data not filled"),
                                       at(240, "Lle::blobListener"), at(261, "GET_REPORT_RESP"),
                                       at(308, "GET_REPORT_RESP message data not filled"),
                                       at(240, "Lle::blobListener"), at(312, "IND_REPORT_RESP"),
                                       at(355, "IND_REPORT_RESP message data not filled")}));
}

TEST_F(LleAnswers, CallbacksStayAndAreReplacedByTheNextCall) {
  enableQuietly();
  ASSERT_EQ(0, lleGetLastEstimationReport(onLast));
  ASSERT_EQ(0, lleRegEstimationReports(onReport));
  for (int i = 0; i < 2; ++i) {
    send(lastReport(kRows[0].estimate));
    send(periodicReport(kRows[0].estimate));
  }
  ASSERT_EQ(4u, waitForCalls(4).size());
  ASSERT_EQ(0, lleGetLastEstimationReport(onOtherLast));
  ASSERT_EQ(0, lleRegEstimationReports(onOtherReport));
  send(lastReport(kRows[0].estimate));
  send(periodicReport(kRows[0].estimate));
  const LleEstimationReport report = kRows[0].report;
  EXPECT_EQ(settle(), (CallList{{"last", 0, report},
                                {"report", 0, report},
                                {"last", 0, report},
                                {"report", 0, report},
                                {"otherLast", 0, report},
                                {"otherReport", 0, report}}));
}

TEST_F(LleAnswers, TransactionIdIsNotRead) {
  enableQuietly();
  ASSERT_EQ(0, lleGetLastEstimationReport(onLast));
  LleProto::ClientMsg message = lastReport(kRows[0].estimate);
  message.set_transaction_id(UINT64_MAX);
  send(message);
  EXPECT_EQ(settle(), (CallList{{"last", 0, kRows[0].report}}));
}

}  // namespace
}  // namespace lletest
