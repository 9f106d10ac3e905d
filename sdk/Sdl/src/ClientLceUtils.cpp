// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "ClientLceUtils.h"

#include "StatusConversion.h"

status_v2_e ClientLceUtils::statusToStatusV2(status_e status) {
  return orb::utils::statusToStatusV2(status);
}

status_e ClientLceUtils::protoStatusToClient(LceProto::Status status) {
  return orb::utils::protoStatusToClient(status, __FILE__, __LINE__);
}

bool ClientLceUtils::isAccessNwTypeValid(SdlAccessNetworkType type) {
  // Unsigned, so that one comparison refuses negative values too.
  return static_cast<uint32_t>(type) <= SDL_ACCESS_NETWORK_TYPE_NR5G;
}

LceProto::AccessNetwork ClientLceUtils::clientAccessLevelToProto(SdlAccessNetworkType type) {
  switch (type) {
    case SDL_ACCESS_NETWORK_TYPE_WCDMA:
      return LceProto::WCDMA;
    case SDL_ACCESS_NETWORK_TYPE_LTE:
      return LceProto::LTE;
    case SDL_ACCESS_NETWORK_TYPE_NR5G:
      return LceProto::NR5G;
    default:
      return LceProto::NONE;
  }
}

bool ClientLceUtils::isReportingActionValid(LceReportingAction action) {
  return action >= LCE_REPORTING_ACTION_STOP && action <= LCE_REPORTING_ACTION_RESET;
}

LceProto::ReportingAction ClientLceUtils::clientReportingActionToProto(LceReportingAction action) {
  switch (action) {
    case LCE_REPORTING_ACTION_START:
      return LceProto::START;
    case LCE_REPORTING_ACTION_RESET:
      return LceProto::RESET;
    default:
      return LceProto::STOP;
  }
}

LceConfidenceLevel ClientLceUtils::protoConfidenceLevelToClient(LceProto::ConfidenceLevel level) {
  if (level >= LceProto::L1 && level <= LceProto::L7) {
    return static_cast<LceConfidenceLevel>(level);
  }
  return LCE_CONFIDENCE_LEVEL_L0;
}

LceLinkDirection ClientLceUtils::protoLinkDirectionToClient(LceProto::LinkDirection direction) {
  return direction == LceProto::DOWN_LINK ? LCE_LINK_DIRECTION_DOWNLINK : LCE_LINK_DIRECTION_UPLINK;
}

LceEstimationReportStatus ClientLceUtils::protoEstimationReportStatusToClient(
    const std::string& error) {
  if (error == "NONE") return LCE_ESTIMATION_REPORT_STATUS_SUCCESS;
  if (error == "REPORTING_CRITERIA_NOT_SET") return LCE_ESTIMATION_REPORT_STATUS_CRITERIA_NOT_SET;
  return LCE_ESTIMATION_REPORT_STATUS_OTHER;
}

LceReportingCriteriaStatus ClientLceUtils::protoReportingCriteriaStatusToClient(
    const std::string& error) {
  if (error == "NONE") return LCE_REPORTING_CRITERIA_STATUS_SUCCESS;
  if (error == "INVALID_ARGUMENTS") return LCE_REPORTING_CRITERIA_STATUS_INVALID_ARGUMENTS;
  if (error == "REPORTING_CRITERIA_TYPE_MISMATCH") {
    return LCE_REPORTING_CRITERIA_STATUS_TYPE_MISMATCH;
  }
  return LCE_REPORTING_CRITERIA_STATUS_OTHER;
}
