// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

// The fields of all messages in proto/ a second time, because the generated code has the names of
// enumerators, but not the names and numbers of fields.

#include "TraceTables.h"

#include "lce.pb.h"
#include "lle.pb.h"
#include "lli.pb.h"

namespace orbsim {
namespace {

template <size_t kCount>
constexpr MessageTable table(const char* name, const FieldTable (&fields)[kCount]) {
  return {name, fields, kCount};
}
template <size_t kCount>
constexpr MessageTable oneof(const char* name, const FieldTable (&fields)[kCount]) {
  return {name, fields, kCount, true};
}

constexpr FieldTable flag(uint32_t number, const char* name) {
  return {number, name, TraceType::kBool};
}
constexpr FieldTable number32(uint32_t number, const char* name) {
  return {number, name, TraceType::kUint32};
}
constexpr FieldTable numbers32(uint32_t number, const char* name) {
  return {number, name, TraceType::kUint32, true};
}
constexpr FieldTable number64(uint32_t number, const char* name) {
  return {number, name, TraceType::kUint64};
}
constexpr FieldTable text(uint32_t number, const char* name) {
  return {number, name, TraceType::kString};
}
constexpr FieldTable member(uint32_t number, const char* name, const MessageTable& of) {
  return {number, name, TraceType::kMessage, false, &of};
}
template <class Enum, const std::string& (*kName)(Enum)>
constexpr FieldTable enumeration(uint32_t number, const char* name) {
  return {number,
          name,
          TraceType::kEnum,
          false,
          nullptr,
          [](int value) -> const std::string& { return kName(static_cast<Enum>(value)); }};
}
#define ORB_ENUMERATION(number, name, package, type) \
  enumeration<package::type, package::type##_Name>(number, name)

// A message without fields.
constexpr MessageTable nothing(const char* name) { return {name, nullptr, 0}; }

// Every service has these two messages.
constexpr FieldTable kEnableService[] = {flag(1, "enable")};
constexpr MessageTable kEnable = table("EnableService", kEnableService);
constexpr MessageTable kGetLast = nothing("GetLastEstimationReport");

namespace lce {

constexpr FieldTable kCriteriaFields[] = {
    number32(1, "criteria_value_1"), number32(2, "second_list_count"),
    numbers32(3, "second_list"),     number32(4, "first_list_count"),
    numbers32(5, "first_list"),      ORB_ENUMERATION(6, "access_network", LceProto, AccessNetwork),
    number32(7, "criteria_value_2"),
};
constexpr MessageTable kCriteria = table("SetReportingCriteria", kCriteriaFields);
constexpr FieldTable kActionFields[] = {ORB_ENUMERATION(1, "action", LceProto, ReportingAction)};
constexpr MessageTable kAction = table("PerformReportingAction", kActionFields);
constexpr FieldTable kServiceDataFields[] = {
    member(1, "enable_msg", kEnable),
    member(2, "set_reporting_criteria", kCriteria),
    member(3, "get_last_estination_report", kGetLast),
    member(4, "perform_reporting_action", kAction),
};
constexpr MessageTable kServiceData = oneof("ServiceData", kServiceDataFields);
constexpr FieldTable kServiceFields[] = {
    ORB_ENUMERATION(1, "event_id", LceProto, ServiceEventId),
    number64(2, "transaction_id"),
    member(3, "data", kServiceData),
};
constexpr MessageTable kService = table("ServiceMsg", kServiceFields);

constexpr FieldTable kStatusFields[] = {ORB_ENUMERATION(1, "status", LceProto, Status)};
constexpr MessageTable kStatus = table("StatusInd", kStatusFields);
// Both reports have the same fields.
constexpr FieldTable kReportFields[] = {
    number32(1, "rate"),
    ORB_ENUMERATION(2, "confidence_level", LceProto, ConfidenceLevel),
    ORB_ENUMERATION(3, "link_direction", LceProto, LinkDirection),
    number32(4, "queue_size_ul"),
    text(5, "error_string"),
};
constexpr MessageTable kLastReport = table("GetLastEstimationReportResp", kReportFields);
constexpr MessageTable kReport = table("EstimationReportsResp", kReportFields);
constexpr FieldTable kCriteriaResultFields[] = {flag(1, "success"), text(2, "error")};
constexpr MessageTable kCriteriaResult = table("SetReportingCriteriaResp", kCriteriaResultFields);
constexpr FieldTable kClientDataFields[] = {
    member(1, "status_msg", kStatus),
    member(2, "get_last_estimation_report_resp", kLastReport),
    member(3, "estimation_reports_resp", kReport),
    member(4, "set_reporting_criteria_resp", kCriteriaResult),
};
constexpr MessageTable kClientData = oneof("ClientData", kClientDataFields);
constexpr FieldTable kClientFields[] = {
    ORB_ENUMERATION(1, "event_id", LceProto, ClientEventId),
    number64(2, "transaction_id"),
    member(3, "data", kClientData),
};
constexpr MessageTable kClient = table("ClientMsg", kClientFields);

}  // namespace lce

namespace lle {

constexpr FieldTable kCriteriaFields[] = {number32(1, "reporting_criteria")};
constexpr MessageTable kCriteria = table("SetReportingCriteria", kCriteriaFields);
constexpr FieldTable kServiceDataFields[] = {
    member(1, "enable_msg", kEnable),
    member(2, "set_reporting_criteria", kCriteria),
    member(3, "get_last_estination_report", kGetLast),
};
constexpr MessageTable kServiceData = oneof("ServiceData", kServiceDataFields);
constexpr FieldTable kServiceFields[] = {
    ORB_ENUMERATION(1, "event_id", LleProto, ServiceEventId),
    number64(2, "transaction_id"),
    member(3, "data", kServiceData),
};
constexpr MessageTable kService = table("ServiceMsg", kServiceFields);

constexpr FieldTable kStatusFields[] = {ORB_ENUMERATION(1, "status", LleProto, Status)};
constexpr MessageTable kStatus = table("StatusInd", kStatusFields);
// Both reports have the same fields.
constexpr FieldTable kReportFields[] = {
    flag(1, "status"),
    number32(2, "ul_report_status"),
    number64(3, "ul_latency_estimation"),
    number64(4, "ul_variance_estimation"),
    number32(5, "dl_report_status"),
    number64(6, "dl_latency_estimation"),
    number64(7, "dl_variance_estimation"),
    number32(8, "report_interval"),
    ORB_ENUMERATION(9, "rat", LleProto, RatType),
};
constexpr MessageTable kLastReport = table("GetReportResp", kReportFields);
constexpr MessageTable kReport = table("IndReportResp", kReportFields);
constexpr FieldTable kClientDataFields[] = {
    member(1, "status_msg", kStatus),
    member(2, "get_report_resp", kLastReport),
    member(3, "ind_report_resp", kReport),
};
constexpr MessageTable kClientData = oneof("ClientData", kClientDataFields);
constexpr FieldTable kClientFields[] = {
    ORB_ENUMERATION(1, "event_id", LleProto, ClientEventId),
    number64(2, "transaction_id"),
    member(3, "data", kClientData),
};
constexpr MessageTable kClient = table("ClientMsg", kClientFields);

}  // namespace lle

namespace lli {

constexpr FieldTable kRegisterFields[] = {flag(1, "register_ind")};
constexpr MessageTable kRegister = table("RegLinkInterruptInd", kRegisterFields);
constexpr FieldTable kServiceDataFields[] = {
    member(1, "enable_msg", kEnable),
    member(2, "reg_link_interrupt_ind", kRegister),
};
constexpr MessageTable kServiceData = oneof("ServiceData", kServiceDataFields);
constexpr FieldTable kServiceFields[] = {
    ORB_ENUMERATION(1, "event_id", LliProto, ServiceEventId),
    number64(2, "transaction_id"),
    member(3, "data", kServiceData),
};
constexpr MessageTable kService = table("ServiceMsg", kServiceFields);

constexpr FieldTable kStatusFields[] = {ORB_ENUMERATION(1, "status", LliProto, Status)};
constexpr MessageTable kStatus = table("StatusInd", kStatusFields);
constexpr FieldTable kInterruptionFields[] = {
    ORB_ENUMERATION(1, "handoff_info", LliProto, HandoffInfo),
    ORB_ENUMERATION(2, "pre_handoff_state", LliProto, PreHandoffState),
    ORB_ENUMERATION(3, "source_rat", LliProto, LliRatType),
    ORB_ENUMERATION(4, "target_rat", LliProto, LliRatType),
    number64(5, "estimated_time_to_interruption"),
    number64(6, "estimated_interruption_duration"),
};
constexpr MessageTable kInterruption = table("LliIndResp", kInterruptionFields);
constexpr FieldTable kClientDataFields[] = {
    member(1, "status_msg", kStatus),
    member(2, "lli_ind_resp", kInterruption),
};
constexpr MessageTable kClientData = oneof("ClientData", kClientDataFields);
constexpr FieldTable kClientFields[] = {
    ORB_ENUMERATION(1, "event_id", LliProto, ClientEventId),
    number64(2, "transaction_id"),
    member(3, "data", kClientData),
};
constexpr MessageTable kClient = table("ClientMsg", kClientFields);

}  // namespace lli
}  // namespace

#undef ORB_ENUMERATION

const MessageTable* traceTable(uint32_t sdkType, Direction direction) {
  const bool toDaemon = direction == Direction::kToDaemon;
  switch (sdkType) {
    case kSdkTypeLce:
      return toDaemon ? &lce::kService : &lce::kClient;
    case kSdkTypeLle:
      return toDaemon ? &lle::kService : &lle::kClient;
    case kSdkTypeLli:
      return toDaemon ? &lli::kService : &lli::kClient;
    default:
      return nullptr;
  }
}

}  // namespace orbsim
