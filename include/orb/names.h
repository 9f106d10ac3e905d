// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
/*
 * Names of the values of this API, for logs and for people: an enumerator without what all
 * enumerators of its type begin with. STATUS_V2_SERVICE_DOWN is "SERVICE_DOWN", LLI_RAT_3GPP_LTE
 * "3GPP_LTE". A value that these headers do not know is "unknown": a later library may give such.
 *
 * Everything stands in this header; nothing of it is in the library. The functions may be called
 * from anywhere. What they give is constant, never NULL, and does not change within a SONAME.
 */
#ifndef ORB_NAMES_H
#define ORB_NAMES_H

#include <orb/lce.h>
#include <orb/lle.h>
#include <orb/lli.h>
#include <orb/status.h>

/** The name of @p status: "RESERVED" of STATUS_RESERVED. Since 1.0. */
static inline const char* orbStatusName(status_e status) {
  switch (status) {
    case STATUS_INVALID:
      return "INVALID";
    case STATUS_SUCCESS:
      return "SUCCESS";
    case STATUS_INVALID_ARG:
      return "INVALID_ARG";
    case STATUS_INTERNAL_ERROR:
      return "INTERNAL_ERROR";
    case STATUS_NOT_SUPPORTED:
      return "NOT_SUPPORTED";
    case STATUS_INVALID_OPERATION:
      return "INVALID_OPERATION";
    case STATUS_SERVICE_UP:
      return "SERVICE_UP";
    case STATUS_SERVICE_DOWN:
      return "SERVICE_DOWN";
    case STATUS_INVALID_SLOT:
      return "INVALID_SLOT";
    case STATUS_RESERVED:
      return "RESERVED";
  }
  return "unknown";
}

/** The name of @p status: "SERVICE_DOWN" of STATUS_V2_SERVICE_DOWN. Since 1.0. */
static inline const char* orbStatusV2Name(status_v2_e status) {
  switch (status) {
    case STATUS_V2_SUCCESS:
      return "SUCCESS";
    case STATUS_V2_INVALID:
      return "INVALID";
    case STATUS_V2_INVALID_ARG:
      return "INVALID_ARG";
    case STATUS_V2_INTERNAL_ERROR:
      return "INTERNAL_ERROR";
    case STATUS_V2_NOT_SUPPORTED:
      return "NOT_SUPPORTED";
    case STATUS_V2_INVALID_OPERATION:
      return "INVALID_OPERATION";
    case STATUS_V2_RESERVED:
      return "RESERVED";
    case STATUS_V2_SERVICE_UP:
      return "SERVICE_UP";
    case STATUS_V2_SERVICE_DOWN:
      return "SERVICE_DOWN";
  }
  return "unknown";
}

/** The name of @p type: "NR5G" of SDL_ACCESS_NETWORK_TYPE_NR5G. Since 1.0. */
static inline const char* orbSdlAccessNetworkTypeName(SdlAccessNetworkType type) {
  switch (type) {
    case SDL_ACCESS_NETWORK_TYPE_NONE:
      return "NONE";
    case SDL_ACCESS_NETWORK_TYPE_WCDMA:
      return "WCDMA";
    case SDL_ACCESS_NETWORK_TYPE_LTE:
      return "LTE";
    case SDL_ACCESS_NETWORK_TYPE_NR5G:
      return "NR5G";
  }
  return "unknown";
}

/** The name of @p action: "RESET" of LCE_REPORTING_ACTION_RESET. Since 1.0. */
static inline const char* orbLceReportingActionName(LceReportingAction action) {
  switch (action) {
    case LCE_REPORTING_ACTION_STOP:
      return "STOP";
    case LCE_REPORTING_ACTION_START:
      return "START";
    case LCE_REPORTING_ACTION_RESET:
      return "RESET";
  }
  return "unknown";
}

/** The name of @p status: "OTHER" of LCE_REPORTING_CRITERIA_STATUS_OTHER. Since 1.0. */
static inline const char* orbLceReportingCriteriaStatusName(LceReportingCriteriaStatus status) {
  switch (status) {
    case LCE_REPORTING_CRITERIA_STATUS_SUCCESS:
      return "SUCCESS";
    case LCE_REPORTING_CRITERIA_STATUS_INVALID_ARGUMENTS:
      return "INVALID_ARGUMENTS";
    case LCE_REPORTING_CRITERIA_STATUS_TYPE_MISMATCH:
      return "TYPE_MISMATCH";
    case LCE_REPORTING_CRITERIA_STATUS_OTHER:
      return "OTHER";
  }
  return "unknown";
}

/** The name of @p status: "OTHER" of LCE_ESTIMATION_REPORT_STATUS_OTHER. Since 1.0. */
static inline const char* orbLceEstimationReportStatusName(LceEstimationReportStatus status) {
  switch (status) {
    case LCE_ESTIMATION_REPORT_STATUS_SUCCESS:
      return "SUCCESS";
    case LCE_ESTIMATION_REPORT_STATUS_CRITERIA_NOT_SET:
      return "CRITERIA_NOT_SET";
    case LCE_ESTIMATION_REPORT_STATUS_OTHER:
      return "OTHER";
  }
  return "unknown";
}

/** The name of @p level: "L7" of LCE_CONFIDENCE_LEVEL_L7. Since 1.0. */
static inline const char* orbLceConfidenceLevelName(LceConfidenceLevel level) {
  switch (level) {
    case LCE_CONFIDENCE_LEVEL_L0:
      return "L0";
    case LCE_CONFIDENCE_LEVEL_L1:
      return "L1";
    case LCE_CONFIDENCE_LEVEL_L2:
      return "L2";
    case LCE_CONFIDENCE_LEVEL_L3:
      return "L3";
    case LCE_CONFIDENCE_LEVEL_L4:
      return "L4";
    case LCE_CONFIDENCE_LEVEL_L5:
      return "L5";
    case LCE_CONFIDENCE_LEVEL_L6:
      return "L6";
    case LCE_CONFIDENCE_LEVEL_L7:
      return "L7";
  }
  return "unknown";
}

/** The name of @p direction: "DOWNLINK" of LCE_LINK_DIRECTION_DOWNLINK. Since 1.0. */
static inline const char* orbLceLinkDirectionName(LceLinkDirection direction) {
  switch (direction) {
    case LCE_LINK_DIRECTION_UPLINK:
      return "UPLINK";
    case LCE_LINK_DIRECTION_DOWNLINK:
      return "DOWNLINK";
  }
  return "unknown";
}

/** The name of @p type: "HANDOFF" of LLI_HANDOFF_IND_TYPE_HANDOFF. Since 1.0. */
static inline const char* orbLliHandoffIndTypeName(LliHandoffIndType type) {
  switch (type) {
    case LLI_HANDOFF_IND_TYPE_PRE_HANDOFF:
      return "PRE_HANDOFF";
    case LLI_HANDOFF_IND_TYPE_HANDOFF:
      return "HANDOFF";
  }
  return "unknown";
}

/** The name of @p state: "EXIT" of LLI_PRE_HANDOFF_STATE_EXIT. Since 1.0. */
static inline const char* orbLliPreHandoffStateName(LliPreHandoffState state) {
  switch (state) {
    case LLI_PRE_HANDOFF_STATE_ENTRY:
      return "ENTRY";
    case LLI_PRE_HANDOFF_STATE_EXIT:
      return "EXIT";
  }
  return "unknown";
}

/** The name of @p state: "IMMINENT" of LLI_HANDOFF_STATE_IMMINENT. Since 1.0. */
static inline const char* orbLliHandoffStateName(LliHandoffState state) {
  switch (state) {
    case LLI_HANDOFF_STATE_START:
      return "START";
    case LLI_HANDOFF_STATE_SUCCESS:
      return "SUCCESS";
    case LLI_HANDOFF_STATE_FAILURE:
      return "FAILURE";
    case LLI_HANDOFF_STATE_IMMINENT:
      return "IMMINENT";
  }
  return "unknown";
}

/** The name of @p rat: "3GPP2_WLAN" of LLI_RAT_3GPP2_WLAN. Since 1.0. */
static inline const char* orbLliRatName(LliRat rat) {
  switch (rat) {
    case LLI_RAT_NULL_BEARER:
      return "NULL_BEARER";
    case LLI_RAT_3GPP_WCDMA:
      return "3GPP_WCDMA";
    case LLI_RAT_3GPP_GERAN:
      return "3GPP_GERAN";
    case LLI_RAT_3GPP_LTE:
      return "3GPP_LTE";
    case LLI_RAT_3GPP_TDSCDMA:
      return "3GPP_TDSCDMA";
    case LLI_RAT_3GPP_WLAN:
      return "3GPP_WLAN";
    case LLI_RAT_3GPP_5G:
      return "3GPP_5G";
    case LLI_RAT_3GPP_CIWLAN:
      return "3GPP_CIWLAN";
    case LLI_RAT_3GPP2_1X:
      return "3GPP2_1X";
    case LLI_RAT_3GPP2_HRPD:
      return "3GPP2_HRPD";
    case LLI_RAT_3GPP2_EHRPD:
      return "3GPP2_EHRPD";
    case LLI_RAT_3GPP2_WLAN:
      return "3GPP2_WLAN";
  }
  return "unknown";
}

#endif /* ORB_NAMES_H */
