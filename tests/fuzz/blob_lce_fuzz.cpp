// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
//
// Passes a blob to the listener of LCE. Input: the blob. In an answer to criteria, transaction id 1
// is replaced by the id of a request that is really under way.
#include <string>

#include "FuzzPlatform.h"
#include "FuzzTarget.h"
#include "Lce.h"
#include "QuietService.h"
#include "Watchdog.h"
#include "lce.pb.h"

namespace {

using Blob = std::vector<uint8_t>;
using Lines = std::vector<std::string>;

QuietService* service = nullptr;

void onCriteria(LceReportingCriteriaStatus status) { called(callOf("criteria", status)); }
void note(const char* name, LceEstimationReportStatus status, const LceEstimationReport& report) {
  called(callOf(name, status, report.rate, report.confidenceLevel, report.linkDirection,
                report.queueSizeUL));
}
void onLast(LceEstimationReportStatus status, LceEstimationReport report) {
  note("last", status, report);
}
void onReport(LceEstimationReportStatus status, LceEstimationReport report) {
  note("report", status, report);
}

template <class Report>
Call reportCall(const char* name, const Report& report) {
  const std::string& error = report.error_string();
  const int level = report.confidence_level();
  return callOf(name,
                error == "NONE"                         ? 1
                : error == "REPORTING_CRITERIA_NOT_SET" ? 2
                                                        : 3,
                report.rate(), level >= 0 && level <= 7 ? level : 0,
                report.link_direction() == 1 ? 1 : 0, report.queue_size_ul());
}

int criteriaStatus(const std::string& error) {
  if (error == "NONE") return LCE_REPORTING_CRITERIA_STATUS_SUCCESS;
  if (error == "INVALID_ARGUMENTS") return LCE_REPORTING_CRITERIA_STATUS_INVALID_ARGUMENTS;
  if (error == "REPORTING_CRITERIA_TYPE_MISMATCH")
    return LCE_REPORTING_CRITERIA_STATUS_TYPE_MISMATCH;
  return LCE_REPORTING_CRITERIA_STATUS_OTHER;
}

Calls expectedCalls(const LceProto::ClientMsg& message) {
  Calls expected;
  const auto& data = message.data();
  const int event = message.event_id();
  if (event == LceProto::STATUS_IND && data.has_status_msg())
    expectStatus(data.status_msg().status(), expected);
  if (event == LceProto::GET_LAST_ESTIMATION_REPORT_IND &&
      data.has_get_last_estimation_report_resp())
    expected.push_back(reportCall("last", data.get_last_estimation_report_resp()));
  if (event == LceProto::ESTIMATION_REPORTS_IND && data.has_estimation_reports_resp())
    expected.push_back(reportCall("report", data.estimation_reports_resp()));
  return expected;
}

// The daemon's text in the message that a line shows; null if there is none.
const std::string* textOf(const LceProto::ClientMsg& message) {
  const auto& data = message.data();
  const int event = message.event_id();
  if (event == LceProto::GET_LAST_ESTIMATION_REPORT_IND &&
      data.has_get_last_estimation_report_resp())
    return &data.get_last_estimation_report_resp().error_string();
  if (event == LceProto::ESTIMATION_REPORTS_IND && data.has_estimation_reports_resp())
    return &data.estimation_reports_resp().error_string();
  if (event == LceProto::SET_REPORTING_CRITERIA_ASYNC_RESULT &&
      data.has_set_reporting_criteria_resp())
    return &data.set_reporting_criteria_resp().error();
  return nullptr;
}

// The line ends with the daemon's text up to a NUL, or with the beginning of the text if the line
// is full. A '%' counts twice for the length.
void checkTextUnchanged(const std::string& line, const char* mark, const std::string& text) {
  const std::string whole = text.c_str();
  const size_t at = line.find(mark);
  FUZZ_CHECK(at != std::string::npos);
  const std::string shown = line.substr(at + std::strlen(mark));
  FUZZ_CHECK(whole.compare(0, shown.size(), shown) == 0);
  if (shown.size() == whole.size()) return;
  size_t size = line.size();
  for (const char c : shown) size += c == '%' ? 1 : 0;
  FUZZ_CHECK(size + 1 >= fuzzplatform::kLongestLine);
}

void checkLines(const Lines& lines, const LceProto::ClientMsg& message) {
  constexpr char kHead[] = "|Lce|Lce::blobListener:";
  const std::string* const text = textOf(message);
  FUZZ_CHECK(lines.size() >= 2);
  FUZZ_CHECK(lines[0].compare(0, std::strlen(kHead), kHead) == 0);
  if (text == nullptr) return;
  // The lines: the listener was called, the message's name, its values, the result.
  FUZZ_CHECK(lines.size() == 4);
  const bool answer = message.event_id() == LceProto::SET_REPORTING_CRITERIA_ASYNC_RESULT;
  checkTextUnchanged(lines[2], answer ? ", error: " : ", errorString: ", *text);
}

void deliver(const Blob& blob, const LceProto::ClientMsg& message, const Calls& expected) {
  const fuzzplatform::Capture capture;
  service->deliver(blob);
  checkLines(capture.lines(), message);
  FUZZ_CHECK(takeCalls() == expected);
}

// A request that is under way gets its answer once.
void answerRequest(LceProto::ClientMsg message) {
  const LceReportingCriteria criteria = {};
  const int64_t id = lceSetReportingCriteria(&criteria, onCriteria);
  FUZZ_CHECK(id > 0);
  service->forgetRequests(1);
  message.set_transaction_id(static_cast<uint64_t>(id));
  Blob blob(message.ByteSizeLong());
  FUZZ_CHECK(message.SerializeToArray(blob.data(), static_cast<int>(blob.size())));
  service->deliver(blob);
  const int status = criteriaStatus(message.data().set_reporting_criteria_resp().error());
  FUZZ_CHECK(takeCalls() == Calls{callOf("criteria", status)});
  deliver(blob, message, {});
}

}  // namespace

int LLVMFuzzerInitialize(int*, char***) {
  const Watchdog::Step step("set-up");
  service = new QuietService(orb_lce_enable, createLceClient, Lce::mInstance());
  FUZZ_CHECK(lceRegEstimationReports(onReport) == 0);
  FUZZ_CHECK(lceGetLastEstimationReport(onLast) == 0);
  service->forgetRequests(1);
  return 0;
}

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const Watchdog::Step step("blob_lce");
  const Blob blob(data, data + size);
  const auto message = QuietService::messageIn<LceProto::ClientMsg>(blob);
  deliver(blob, message, expectedCalls(message));
  if (message.event_id() == LceProto::SET_REPORTING_CRITERIA_ASYNC_RESULT &&
      message.data().has_set_reporting_criteria_resp() && message.transaction_id() == 1)
    answerRequest(message);
  return 0;
}
