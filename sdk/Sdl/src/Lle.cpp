// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
// The LLE service: its tables, its requests and its messages.
#include "Lle.h"

#include "ClientLleUtils.h"

namespace {

constexpr LogSource kSource{"Lle", "sdk/Sdl/src/Lle.cpp"};

// Log consumers know the lines by these numbers.
constexpr ReportPoints kLastReport{
    {kListener, 261, "GET_REPORT_RESP"},
    {kListener, 278,
     "GET_REPORT_RESP status: %d, ulReportStatus: %d, ulLatencyEstimation: %d, "
     "ulVarianceEstimation: %d, dlReportStatus: %d, dlLatencyEstimation: %d, "
     "dlVarianceEstimation: %d, reportInterval: %d, rat: %d"},
    {kListener, 303, "GET_REPORT_RESP cb sent"},
    {kListener, 305, "mLastEstimationReportCb null"},
    {kListener, 308, "GET_REPORT_RESP message data not filled"}};
constexpr ReportPoints kReportInd{
    {kListener, 312, "IND_REPORT_RESP"},
    {kListener, 329,
     "IND_REPORT_RESP status: %d, ulReportStatus: %d, ulLatencyEstimation: %d, "
     "ulVarianceEstimation: %d, dlReportStatus: %d, dlLatencyEstimation: %d, "
     "dlVarianceEstimation: %d, reportInterval: %d, rat: %d"},
    {kListener, 350, "IND_REPORT_RESP cb sent"},
    {kListener, 352, "mEstimationReportInd null"},
    {kListener, 355, "IND_REPORT_RESP message data not filled"}};

template <class Report>
LleEstimationReport toClient(const Report& report) {
  LleEstimationReport estimation = {};
  estimation.ulReportStatus = static_cast<uint8_t>(report.ul_report_status());
  estimation.ulLatencyEstimation = report.ul_latency_estimation();
  estimation.ulVarianceEstimation = report.ul_variance_estimation();
  estimation.dlReportStatus = static_cast<uint8_t>(report.dl_report_status());
  estimation.dlLatencyEstimation = report.dl_latency_estimation();
  estimation.dlVarianceEstimation = report.dl_variance_estimation();
  estimation.reportInterval = report.report_interval() != 0 ? 1 : 0;
  estimation.rat = ClientLleUtils::protoAccessNetworkToClient(report.rat());
  return estimation;
}

}  // namespace

const ServiceTable Lle::kTable{
    OrbSdkClientType::LLE,
    kSource,
    &Lle::mBaseStatusV2Cb,
    &Lle::mInstance,
    &Lle::make,
    &Service::enableMessage<LleProto::ServiceMsg, LleProto::ENABLE>,
    {"orb_lle_enable", {20, "Enable"}, {22, "Status ind function null"}, 29},
    {"createLleClient", {82, "Create"}, {84, "Cb function null"}, 91},
    {"orb_lle_disable", {53, "Disable"}, 56, 61},
    {"destroyLleClient", {115, "Destroy"}, 118, 123},
    {"Lle", 222, "Lle ctor"},
    {"~Lle", 229, "~Lle called"},
    {kListener, 240, "Lle::blobListener"},
    {kListener, 367, "unknown internal status %d"},
    {249, 251, 254, 257},
    {kListener, 358, "Unknown message type"}};

int64_t Lle::setReportingCriteria(uint32_t criteria) {
  OnArena<LleProto::ServiceMsg> message;
  message->set_event_id(LleProto::SET_REPORTING_CRITERIA);
  message->mutable_data()->mutable_set_reporting_criteria()->set_reporting_criteria(criteria);
  return request(*message);
}

int64_t Lle::getLastEstimationReport(LleEstimationReportCb cb) {
  return requestLastReport<LleProto::ServiceMsg, LleProto::GET_LAST_ESTIMATION_REPORT>(
      mLastEstimationReportCb, cb);
}

int64_t Lle::regEstimationReports(LleEstimationReportCb cb) {
  return registerFor(mEstimationReportInd, cb);
}

void Lle::handleBlob(const std::vector<uint8_t>& blob) {
  OnArena<LleProto::ClientMsg> message;
  parse(message, blob);
  const LleProto::ClientData& data = message->data();
  switch (message->event_id()) {
    case LleProto::STATUS_IND:
      handleStatus<ClientLleUtils>(data);
      break;
    case LleProto::GET_REPORT_RESP:
      handleMember(kLastReport, data.has_get_report_resp(), [&] {
        const auto& report = data.get_report_resp();
        handleReport(report, mLastEstimationReportCb, report.status() ? 0 : 1, kLastReport);
      });
      break;
    case LleProto::IND_REPORT_RESP:
      // Unlike an answer, an indication is passed on as valid whatever its status says.
      handleMember(kReportInd, data.has_ind_report_resp(), [&] {
        handleReport(data.ind_report_resp(), mEstimationReportInd, 0, kReportInd);
      });
      break;
    default:
      log(kTable.unknownMessage);
      break;
  }
}

template <class Report>
void Lle::handleReport(const Report& report, const LleEstimationReportCb& cb, int32_t result,
                       const ReportPoints& points) {
  const LleEstimationReport estimation = toClient(report);
  // The line shows the low 32 bits of the 64-bit estimates, signed.
  points.values.print(
      kSource, report.status() ? 1 : 0, static_cast<int>(estimation.ulReportStatus),
      static_cast<int>(estimation.ulLatencyEstimation),
      static_cast<int>(estimation.ulVarianceEstimation),
      static_cast<int>(estimation.dlReportStatus), static_cast<int>(estimation.dlLatencyEstimation),
      static_cast<int>(estimation.dlVarianceEstimation),
      static_cast<int>(estimation.reportInterval), static_cast<int>(estimation.rat));
  log(callBack(cb, result, &estimation) ? points.sent : points.noCallback);
}
