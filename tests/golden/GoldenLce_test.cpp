// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
// Every byte of LCE on the socket: handshake, requests and indications.
#include <deque>

#include "GoldenService.h"
#include "LceFixture.h"

namespace {

std::deque<int> drawn;  // by the test's thread only

}  // namespace

// Replaces the C library's rand(), which C libraries declare differently.
extern "C" int goldenRand() __asm__("rand");
extern "C" int goldenRand() {
  const int number = drawn.front();
  drawn.pop_front();
  return number;
}

namespace golden {
namespace {

using namespace lcetest;

class GoldenLce : public GoldenService<LceNames> {
 protected:
  static std::string describe(const servicetest::Call<LceNames>& call) {
    if (call.callback == "status" || call.callback == "v2") return describeStatus(call);
    std::string text = call.callback + " callback: status " + std::to_string(call.status);
    if (call.callback == "criteria") return text;
    return text + ", rate " + std::to_string(call.record.rate) + ", confidenceLevel " +
           std::to_string(call.record.confidenceLevel) + ", linkDirection " +
           std::to_string(call.record.linkDirection) + ", queueSizeUL " +
           std::to_string(call.record.queueSizeUL);
  }
  void recordCriteria(Transcript& transcript, const std::string& text,
                      const LceReportingCriteria& criteria, int id) {
    drawn = {0, id};  // some C libraries return 0 first, which is not an id
    record(transcript, "lceSetReportingCriteria(" + text + ", cb)",
           [&criteria] { return lceSetReportingCriteria(&criteria, onCriteria); });
  }
  void indicateResult(Transcript& transcript, int id, bool success, const std::string& error) {
    drawn = {id};
    setCriteria();
    indicate(transcript,
             "SET_REPORTING_CRITERIA_ASYNC_RESULT for " + std::to_string(id) + ", error \"" +
                 error + "\"",
             criteriaResult(static_cast<uint64_t>(id), success, error), describe);
  }
  static void setCriteria() {
    const LceReportingCriteria criteria = {};
    EXPECT_GT(lceSetReportingCriteria(&criteria, onCriteria), 0);
    EXPECT_EQ(1u, wiretap::take(1).size());
  }
};

TEST_F(GoldenLce, Requests) {
  Transcript transcript(
      "LCE: what goes over the socket for each call of an application. tests/golden, "
      "GoldenLce_test\nSession 0x01020304, then 0x01020305 and 0x01020306; ids of criteria drawn "
      "by "
      "the test.");
  recordEnableAndDisable(transcript);
  record(
      transcript, "orb_lce_enable(cb)", [] { return orb_lce_enable(onStatus); }, kEnablePieces);

  LceReportingCriteria criteria = {};
  recordCriteria(transcript, "all zero", criteria, 1);
  criteria.firstList[0] = 1;
  criteria.firstList[1] = 300;
  criteria.firstList[2] = 99;  // after the used ones
  criteria.firstListCount = 2;
  criteria.secondList[0] = 4294967295;
  criteria.secondListCount = 1;
  criteria.criteriaValue1 = 5;
  criteria.criteriaValue2 = 6;
  criteria.accessNetworkType = SDL_ACCESS_NETWORK_TYPE_WCDMA;
  recordCriteria(transcript, "first {1, 300}, second {4294967295}, values 5 and 6, WCDMA", criteria,
                 0x01020304);
  criteria.criteriaValue1 = 0x01020304;
  criteria.criteriaValue2 = 4294967295;
  for (uint32_t i = 0; i < LCE_REPORTING_CRITERIA_LIST_MAX; ++i) {
    criteria.firstList[i] = 100 + i;
    criteria.secondList[i] = uint32_t{1} << i;
  }
  criteria.firstListCount = criteria.secondListCount = LCE_REPORTING_CRITERIA_LIST_MAX;
  criteria.accessNetworkType = SDL_ACCESS_NETWORK_TYPE_LTE;
  recordCriteria(transcript, "20 entries in both, values 0x01020304 and 4294967295, LTE", criteria,
                 0x7fffffff);
  criteria = {};
  criteria.accessNetworkType = SDL_ACCESS_NETWORK_TYPE_NR5G;
  recordCriteria(transcript, "NR5G alone", criteria, 127);

  record(transcript, "lceGetLastEstimationReport(cb)",
         [] { return lceGetLastEstimationReport(onLast); });
  for (const auto& [action, name] : {std::pair(LCE_REPORTING_ACTION_STOP, "STOP"),
                                     std::pair(LCE_REPORTING_ACTION_START, "START"),
                                     std::pair(LCE_REPORTING_ACTION_RESET, "RESET")}) {
    record(transcript, std::string("lcePerformReportingAction(LCE_REPORTING_ACTION_") + name + ")",
           [value = action] { return lcePerformReportingAction(value); });
  }
  record(
      transcript, "lceRegEstimationReports(cb)", [] { return lceRegEstimationReports(onReport); },
      0);
  EXPECT_TRUE(drawn.empty());
  expectGolden("lce_requests.hex", transcript.text());
}

TEST_F(GoldenLce, Indications) {
  Transcript transcript(
      "LCE: what the daemon sends, and what an application's callbacks get of it. tests/golden, "
      "GoldenLce_test");
  ASSERT_NO_FATAL_FAILURE(enableBothQuietly());
  ASSERT_EQ(0, lceRegEstimationReports(onReport));
  indicateStatuses(transcript, describe);

  indicateResult(transcript, 1, true, "NONE");
  indicateResult(transcript, 0x01020304, false, "INVALID_ARGUMENTS");
  indicateResult(transcript, 0x7fffffff, false, "REPORTING_CRITERIA_TYPE_MISMATCH");
  indicateResult(transcript, 300, false, "another text");
  indicate(transcript, "SET_REPORTING_CRITERIA_ASYNC_RESULT for nobody",
           criteriaResult(0x0102030405060708, true, "NONE"), describe);

  const struct {
    uint32_t rate;
    int confidence, direction;
    uint32_t queue;
    const char* error;
  } reports[] = {{48000, 7, 1, 6000, "NONE"},
                 {0, 0, 0, 0, "NONE"},
                 {4294967295, 4, 0, 0x01020304, "NONE"},
                 {0, 0, 0, 0, "REPORTING_CRITERIA_NOT_SET"},
                 {1, 8, 2, 1, "another text"},
                 {1, -1, -1, 1, ""}};
  ASSERT_EQ(0, lceGetLastEstimationReport(onLast));
  ASSERT_EQ(1u, wiretap::take(1).size());
  for (const auto& [rate, confidence, direction, queue, error] : reports) {
    const std::string values = ", rate " + std::to_string(rate) + ", confidence " +
                               std::to_string(confidence) + ", direction " +
                               std::to_string(direction) + ", queue " + std::to_string(queue) +
                               ", error \"" + error + "\"";
    indicate(transcript, "GET_LAST_ESTIMATION_REPORT_IND" + values,
             lastReport(rate, confidence, direction, queue, error), describe);
    indicate(transcript, "ESTIMATION_REPORTS_IND" + values,
             periodicReport(rate, confidence, direction, queue, error), describe);
  }
  expectGolden("lce_indications.hex", transcript.text());
}

TEST_F(GoldenLce, Session) {
  Transcript transcript(
      "LCE: a session from the first byte to the last. tests/golden, GoldenLce_test");
  beginSession(transcript);
  LceReportingCriteria criteria = {};
  criteria.firstList[0] = 1000;
  criteria.firstListCount = 1;
  criteria.criteriaValue1 = 500;
  criteria.accessNetworkType = SDL_ACCESS_NETWORK_TYPE_LTE;
  recordCriteria(transcript, "{1000}, {}, 500, 0, LTE", criteria, 305419896);
  tell(transcript, "SET_REPORTING_CRITERIA_ASYNC_RESULT for 305419896, error \"NONE\"",
       criteriaResult(305419896, true, "NONE"));
  record(
      transcript, "lceRegEstimationReports(cb)", [] { return lceRegEstimationReports(onReport); },
      0);
  record(transcript, "lcePerformReportingAction(START)",
         [] { return lcePerformReportingAction(LCE_REPORTING_ACTION_START); });
  tell(transcript, "ESTIMATION_REPORTS_IND, rate 40000, confidence 6, downlink, queue 1500",
       periodicReport(40000, 6, 1, 1500, "NONE"));
  record(transcript, "lceGetLastEstimationReport(cb)",
         [] { return lceGetLastEstimationReport(onLast); });
  tell(transcript, "GET_LAST_ESTIMATION_REPORT_IND, the same",
       lastReport(40000, 6, 1, 1500, "NONE"));
  record(transcript, "lcePerformReportingAction(STOP)",
         [] { return lcePerformReportingAction(LCE_REPORTING_ACTION_STOP); });
  endSession(transcript);
  expectGolden("lce_session.hex", transcript.text());
}

}  // namespace
}  // namespace golden
