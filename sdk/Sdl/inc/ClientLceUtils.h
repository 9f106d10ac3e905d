// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <orb/lce.h>

#include <string>

#include "lce.pb.h"

// Translates between the values of the C API and those of the LCE messages. No state, no instances;
// may be called from any thread. Nothing fails: an unknown value gives the stated default.
class ClientLceUtils {
 public:
  ClientLceUtils() = delete;

  // The second generation's number of a status; see StatusConversion.h.
  static status_v2_e statusToStatusV2(status_e status);

  // One less than the message's number; STATUS_INVALID and a log line for a number it does not
  // list.
  static status_e protoStatusToClient(LceProto::Status status);

  // Whether an application may ask for this access network.
  static bool isAccessNwTypeValid(SdlAccessNetworkType type);

  // The message's access network; NONE for anything unknown.
  static LceProto::AccessNetwork clientAccessLevelToProto(SdlAccessNetworkType type);

  // Whether this is one of the three actions.
  static bool isReportingActionValid(LceReportingAction action);

  // The message's action, whose numbers have another order and start; STOP for anything unknown.
  static LceProto::ReportingAction clientReportingActionToProto(LceReportingAction action);

  // The level as it is; level 0 for anything unknown.
  static LceConfidenceLevel protoConfidenceLevelToClient(LceProto::ConfidenceLevel level);

  // The direction; uplink for anything unknown.
  static LceLinkDirection protoLinkDirectionToClient(LceProto::LinkDirection direction);

  // What a report's error text means. The comparison is exact; any other text, the empty one
  // included, is LCE_ESTIMATION_REPORT_STATUS_OTHER.
  static LceEstimationReportStatus protoEstimationReportStatusToClient(const std::string& error);

  // What the error text of a criteria answer means. The comparison is exact; any other text, the
  // empty one included, is LCE_REPORTING_CRITERIA_STATUS_OTHER.
  static LceReportingCriteriaStatus protoReportingCriteriaStatusToClient(const std::string& error);
};
