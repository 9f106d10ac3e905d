// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <orb/lle.h>

#include "ServiceFixture.h"
#include "lle.pb.h"

namespace lletest {

using namespace servicetest;

inline void onLast(int32_t result, const LleEstimationReport* report);
inline void onReport(int32_t result, const LleEstimationReport* report);

struct LleNames {
  using ClientMsg = LleProto::ClientMsg;
  using Record = LleEstimationReport;
  static constexpr const char* kName = "Lle";
  static constexpr const char* kEnable = "orb_lle_enable";
  static constexpr const char* kDisable = "orb_lle_disable";
  static constexpr const char* kCreate = "createLleClient";
  static constexpr const char* kDestroy = "destroyLleClient";
  static constexpr const char* kCreateWithoutCallback = "Cb function null";
  static constexpr const char* kDestroying = "Destroy";
  // Whether a create that has no client calls its own callback.
  static constexpr bool kCreateTells = true;
  static constexpr uint8_t kEndpoint = 106;
  static constexpr uint8_t kSdkType = orbsim::kSdkTypeLle;

  static int enable(LleStatusIndCb cb) { return orb_lle_enable(cb); }
  static int disable() { return orb_lle_disable(); }
  static int create(LleStatusV2Cb cb) { return createLleClient(cb); }
  static int destroy() { return destroyLleClient(); }

  static std::vector<Request> requests() {
    return {{"lleSetReportingCriteria", [] { return lleSetReportingCriteria(0); }, nullptr},
            {"lleGetLastEstimationReport", [] { return lleGetLastEstimationReport(onLast); },
             [] { return lleGetLastEstimationReport(nullptr); }},
            {"lleRegEstimationReports", [] { return lleRegEstimationReports(onReport); },
             [] { return lleRegEstimationReports(nullptr); }}};
  }
  static std::vector<EventTexts> events() {
    return {{"STATUS_IND", "Status IND message data not filled"},
            {"GET_REPORT_RESP", "GET_REPORT_RESP message data not filled"},
            {"IND_REPORT_RESP", "IND_REPORT_RESP message data not filled"}};
  }
  // The 8-bit members as numbers, not as characters.
  static auto values(const Record& record) {
    return std::tuple_cat(std::make_tuple(int{record.ulReportStatus}, int{record.dlReportStatus}),
                          std::tie(record.ulLatencyEstimation, record.ulVarianceEstimation,
                                   record.dlLatencyEstimation, record.dlVarianceEstimation,
                                   record.reportInterval, record.rat));
  }
};

using Log = CallLog<LleNames>;

inline void onLast(int32_t result, const LleEstimationReport* report) {
  Log::get().add({"last", result, *report});
}
inline void onOtherLast(int32_t result, const LleEstimationReport* report) {
  Log::get().add({"otherLast", result, *report});
}
inline void onReport(int32_t result, const LleEstimationReport* report) {
  Log::get().add({"report", result, *report});
}
inline void onOtherReport(int32_t result, const LleEstimationReport* report) {
  Log::get().add({"otherReport", result, *report});
}

// The daemon's side of a report, in the order of the message's fields.
struct Estimate {
  bool status;
  uint32_t ulStatus;
  uint64_t ulLatency, ulVariance;
  uint32_t dlStatus;
  uint64_t dlLatency, dlVariance;
  uint32_t interval;
  int rat;
};

template <class Report>
void fill(Report* report, const Estimate& estimate) {
  report->set_status(estimate.status);
  report->set_ul_report_status(estimate.ulStatus);
  report->set_ul_latency_estimation(estimate.ulLatency);
  report->set_ul_variance_estimation(estimate.ulVariance);
  report->set_dl_report_status(estimate.dlStatus);
  report->set_dl_latency_estimation(estimate.dlLatency);
  report->set_dl_variance_estimation(estimate.dlVariance);
  report->set_report_interval(estimate.interval);
  report->set_rat(static_cast<LleProto::RatType>(estimate.rat));
}

inline LleProto::ClientMsg lastReport(const Estimate& estimate) {
  auto message = event<LleNames>(LleProto::GET_REPORT_RESP);
  fill(message.mutable_data()->mutable_get_report_resp(), estimate);
  return message;
}

inline LleProto::ClientMsg periodicReport(const Estimate& estimate) {
  auto message = event<LleNames>(LleProto::IND_REPORT_RESP);
  fill(message.mutable_data()->mutable_ind_report_resp(), estimate);
  return message;
}

using LleTest = ServiceTest<LleNames>;

}  // namespace lletest
