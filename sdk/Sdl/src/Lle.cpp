// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
// The LLE service: its tables, its requests and its messages.
#include "Lle.h"

#include "ClientLleUtils.h"

namespace {

constexpr LogPoint point(const char* function, int line, const char* text) {
  return {Lle::kSource, function, line, text};
}

// All fixed lines of the service. Log consumers know them by these numbers.
struct LlePoints {
  ServicePoints service;
  RequestPoints setReportingCriteria;
  ReportPoints lastReport;
  ReportPoints reportInd;
};
constexpr LlePoints kPoints = [] {
  LlePoints points;
  ServicePoints& service = points.service;
  service.enable.entry = point("orb_lle_enable", 20, "Enable");
  service.enable.nullCallback = point("orb_lle_enable", 22, "Status ind function null");
  service.enable.noInstance = point("orb_lle_enable", 29, kNoInstance);
  service.disable.entry = point("orb_lle_disable", 53, "Disable");
  service.disable.noInstance = point("orb_lle_disable", 56, kNoInstance);
  service.disable.noClient = point("orb_lle_disable", 61, kNoClient);
  service.create.entry = point("createLleClient", 82, "Create");
  service.create.nullCallback = point("createLleClient", 84, "Cb function null");
  service.create.noInstance = point("createLleClient", 91, kNoInstance);
  service.destroy.entry = point("destroyLleClient", 115, "Destroy");
  service.destroy.noInstance = point("destroyLleClient", 118, kNoInstance);
  service.destroy.noClient = point("destroyLleClient", 123, kNoClient);
  points.setReportingCriteria = requestPoints(Lle::kSource, "lleSetReportingCriteria", 165, 170);
  service.constructed = point("Lle", 222, "Lle ctor");
  service.destroyed = point("~Lle", 229, "~Lle called");
  service.blobListener = point(kListener, 240, "Lle::blobListener");
  service.status.entry = point(kListener, 249, "STATUS_IND");
  service.status.raw = point(kListener, 251, "status_msg %d");
  service.status.converted = point(kListener, 254, "status %d");
  service.status.empty = point(kListener, 257, "Status IND message data not filled");
  points.lastReport.entry = point(kListener, 261, "GET_REPORT_RESP");
  points.lastReport.values =
      point(kListener, 278,
            "GET_REPORT_RESP status: %d, ulReportStatus: %d, ulLatencyEstimation: %d, "
            "ulVarianceEstimation: %d, dlReportStatus: %d, dlLatencyEstimation: %d, "
            "dlVarianceEstimation: %d, reportInterval: %d, rat: %d");
  points.lastReport.sent = point(kListener, 303, "GET_REPORT_RESP cb sent");
  points.lastReport.noCallback = point(kListener, 305, "mLastEstimationReportCb null");
  points.lastReport.empty = point(kListener, 308, "GET_REPORT_RESP message data not filled");
  points.reportInd.entry = point(kListener, 312, "IND_REPORT_RESP");
  points.reportInd.values =
      point(kListener, 329,
            "IND_REPORT_RESP status: %d, ulReportStatus: %d, ulLatencyEstimation: %d, "
            "ulVarianceEstimation: %d, dlReportStatus: %d, dlLatencyEstimation: %d, "
            "dlVarianceEstimation: %d, reportInterval: %d, rat: %d");
  points.reportInd.sent = point(kListener, 350, "IND_REPORT_RESP cb sent");
  points.reportInd.noCallback = point(kListener, 352, "mEstimationReportInd null");
  points.reportInd.empty = point(kListener, 355, "IND_REPORT_RESP message data not filled");
  service.unknownMessage = point(kListener, 358, "Unknown message type");
  service.unknownStatus = point(kListener, 367, "unknown internal status %d");
  return points;
}();

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

const ServiceTable Lle::kTable{OrbSdkClientType::LLE,
                               kSource,
                               &Lle::mBaseStatusV2Cb,
                               &Lle::mInstance,
                               &Lle::make,
                               &Service::enableMessage<LleProto::ServiceMsg, LleProto::ENABLE>,
                               kPoints.service};
const RequestPoints Lle::kSetReportingCriteria = kPoints.setReportingCriteria;

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
      handleMember(kPoints.lastReport, data.has_get_report_resp(), [&] {
        const auto& report = data.get_report_resp();
        handleReport(report, mLastEstimationReportCb, report.status() ? 0 : 1, kPoints.lastReport);
      });
      break;
    case LleProto::IND_REPORT_RESP:
      // Unlike an answer, an indication is passed on as valid whatever its status says.
      handleMember(kPoints.reportInd, data.has_ind_report_resp(), [&] {
        handleReport(data.ind_report_resp(), mEstimationReportInd, 0, kPoints.reportInd);
      });
      break;
    default:
      log(kPoints.service.unknownMessage);
      break;
  }
}

template <class Report>
void Lle::handleReport(const Report& report, const CallbackSlot<LleEstimationReportCb>& slot,
                       int32_t result, const ReportPoints& points) {
  const LleEstimationReport estimation = toClient(report);
  // The line shows the low 32 bits of the 64-bit estimates, signed.
  points.values.print(
      report.status() ? 1 : 0, static_cast<int>(estimation.ulReportStatus),
      static_cast<int>(estimation.ulLatencyEstimation),
      static_cast<int>(estimation.ulVarianceEstimation),
      static_cast<int>(estimation.dlReportStatus), static_cast<int>(estimation.dlLatencyEstimation),
      static_cast<int>(estimation.dlVarianceEstimation),
      static_cast<int>(estimation.reportInterval), static_cast<int>(estimation.rat));
  log(callBack(slot, result, &estimation) ? points.sent : points.noCallback);
}
