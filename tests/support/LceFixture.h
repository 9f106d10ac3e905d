// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <orb/lce.h>

#include "FewDescriptors.h"
#include "ServiceFixture.h"
#include "lce.pb.h"

namespace lcetest {

using namespace servicetest;

inline void onCriteria(LceReportingCriteriaStatus status);
inline void onLast(LceEstimationReportStatus status, LceEstimationReport report);
inline void onReport(LceEstimationReportStatus status, LceEstimationReport report);

struct LceNames {
  using ClientMsg = LceProto::ClientMsg;
  using Record = LceEstimationReport;
  static constexpr const char* kName = "Lce";
  static constexpr const char* kEnable = "orb_lce_enable";
  static constexpr const char* kDisable = "orb_lce_disable";
  static constexpr const char* kCreate = "createLceClient";
  static constexpr const char* kDestroy = "destroySdfClient";
  static constexpr const char* kCreateWithoutCallback = "cb function null";
  static constexpr const char* kDestroying = "Distroy";
  // Whether a create that has no client calls its own callback.
  static constexpr bool kCreateTells = false;
  static constexpr uint8_t kEndpoint = 105;
  static constexpr uint8_t kSdkType = orbsim::kSdkTypeLce;

  static int enable(LceStatusIndCb cb) { return orb_lce_enable(cb); }
  static int disable() { return orb_lce_disable(); }
  static int create(LceStatusV2Cb cb) { return createLceClient(cb); }
  static int destroy() { return destroySdfClient(); }

  static std::vector<Request> requests() {
    return {{"lceSetReportingCriteria",
             [] {
               const LceReportingCriteria criteria = {};
               return lceSetReportingCriteria(&criteria, onCriteria);
             },
             [] { return lceSetReportingCriteria(nullptr, nullptr); }},
            {"lceGetLastEstimationReport", [] { return lceGetLastEstimationReport(onLast); },
             [] { return lceGetLastEstimationReport(nullptr); }},
            {"lcePerformReportingAction",
             [] { return lcePerformReportingAction(LCE_REPORTING_ACTION_START); },
             [] { return lcePerformReportingAction(static_cast<LceReportingAction>(0)); }},
            {"lceRegEstimationReports", [] { return lceRegEstimationReports(onReport); },
             [] { return lceRegEstimationReports(nullptr); }}};
  }
  // By event number. Without data, the line of the periodic report has the other report's name.
  static std::vector<EventTexts> events() {
    return {{"STATUS_IND", "Status IND message data not filled"},
            {"GET_LAST_ESTIMATION_REPORT_IND",
             "GET_LAST_ESTIMATION_REPORT_IND message data not filled"},
            {"ESTIMATION_REPORTS_IND", "GET_LAST_ESTIMATION_REPORT_IND message data not filled"},
            {"SET_REPORTING_CRITERIA_ASYNC_RESULT",
             "SET_REPORTING_CRITERIA_ASYNC_RESULT message data not filled"}};
  }
  static auto values(const Record& record) {
    return std::tie(record.rate, record.confidenceLevel, record.linkDirection, record.queueSizeUL);
  }
};

using Log = CallLog<LceNames>;

inline void onCriteria(LceReportingCriteriaStatus status) {
  Log::get().add({"criteria", status, {}});
}
inline void onLast(LceEstimationReportStatus status, LceEstimationReport report) {
  Log::get().add({"last", status, report});
}
inline void onOtherLast(LceEstimationReportStatus status, LceEstimationReport report) {
  Log::get().add({"otherLast", status, report});
}
inline void onReport(LceEstimationReportStatus status, LceEstimationReport report) {
  Log::get().add({"report", status, report});
}

inline LceProto::ClientMsg statusInd(int status) { return statusMessage<LceNames>(status); }

inline LceProto::ClientMsg criteriaResult(uint64_t id, bool success, const std::string& error) {
  auto message = event<LceNames>(LceProto::SET_REPORTING_CRITERIA_ASYNC_RESULT);
  message.set_transaction_id(id);
  auto* response = message.mutable_data()->mutable_set_reporting_criteria_resp();
  response->set_success(success);
  response->set_error(error);
  return message;
}

template <class Report>
void fill(Report* report, uint32_t rate, int confidence, int direction, uint32_t queue,
          const std::string& error) {
  report->set_rate(rate);
  report->set_confidence_level(static_cast<LceProto::ConfidenceLevel>(confidence));
  report->set_link_direction(static_cast<LceProto::LinkDirection>(direction));
  report->set_queue_size_ul(queue);
  report->set_error_string(error);
}

inline LceProto::ClientMsg lastReport(uint32_t rate, int confidence, int direction, uint32_t queue,
                                      const std::string& error) {
  auto message = event<LceNames>(LceProto::GET_LAST_ESTIMATION_REPORT_IND);
  fill(message.mutable_data()->mutable_get_last_estimation_report_resp(), rate, confidence,
       direction, queue, error);
  return message;
}

inline LceProto::ClientMsg periodicReport(uint32_t rate, int confidence, int direction,
                                          uint32_t queue, const std::string& error) {
  auto message = event<LceNames>(LceProto::ESTIMATION_REPORTS_IND);
  fill(message.mutable_data()->mutable_estimation_reports_resp(), rate, confidence, direction,
       queue, error);
  return message;
}

class LceTest : public ServiceTest<LceNames> {
 protected:
  static int64_t setCriteria() {
    const LceReportingCriteria criteria = {};
    const int64_t id = lceSetReportingCriteria(&criteria, onCriteria);
    EXPECT_GT(id, 0);
    return id;
  }
};

}  // namespace lcetest
