// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "ModelAnswers.h"

#include "lce.pb.h"
#include "lle.pb.h"
#include "lli.pb.h"

namespace torture::modelanswers {
namespace {

template <class Message>
orbsim::Blob serialise(const Message& message) {
  orbsim::Blob blob(message.ByteSizeLong());
  message.SerializeToArray(blob.data(), static_cast<int>(blob.size()));
  return blob;
}

template <class Message>
bool read(const orbsim::Frame& frame, Message& message, Asked& asked) {
  const orbsim::Blob blob = frame.blob();
  if (!message.ParseFromArray(blob.data(), static_cast<int>(blob.size()))) return false;
  asked.event = message.event_id();
  asked.transaction = message.transaction_id();
  if (message.data().has_enable_msg()) {
    asked.enable = message.data().enable_msg().enable();
    asked.disables = !asked.enable;
  }
  return true;
}

template <class Message, class Status>
orbsim::Blob status(Status status) {
  Message message;
  message.mutable_data()->mutable_status_msg()->set_status(status);
  return serialise(message);
}

std::vector<orbsim::Blob> lce(const Asked& asked, uint32_t connection) {
  LceProto::ClientMsg message;
  const auto fill = [connection](auto* report) {
    report->set_rate(connection);
    report->set_error_string("NONE");
  };
  switch (asked.event) {
    case LceProto::ENABLE:
      return {status<LceProto::ClientMsg>(LceProto::SUCCESS)};
    case LceProto::SET_REPORTING_CRITERIA: {
      message.set_event_id(LceProto::SET_REPORTING_CRITERIA_ASYNC_RESULT);
      message.set_transaction_id(asked.transaction);
      auto* const result = message.mutable_data()->mutable_set_reporting_criteria_resp();
      result->set_success(true);
      result->set_error("NONE");
      return {serialise(message)};
    }
    case LceProto::GET_LAST_ESTIMATION_REPORT:
      message.set_event_id(LceProto::GET_LAST_ESTIMATION_REPORT_IND);
      fill(message.mutable_data()->mutable_get_last_estimation_report_resp());
      return {serialise(message)};
    default:
      message.set_event_id(LceProto::ESTIMATION_REPORTS_IND);
      fill(message.mutable_data()->mutable_estimation_reports_resp());
      return {serialise(message)};
  }
}

std::vector<orbsim::Blob> lle(const Asked& asked, uint64_t connection) {
  const orbsim::Blob success = status<LleProto::ClientMsg>(LleProto::SUCCESS);
  LleProto::ClientMsg message;
  const auto fill = [connection](auto* report) {
    report->set_status(true);
    report->set_ul_latency_estimation(connection);
  };
  switch (asked.event) {
    case LleProto::ENABLE:
      return {success};
    case LleProto::GET_LAST_ESTIMATION_REPORT:
      message.set_event_id(LleProto::GET_REPORT_RESP);
      fill(message.mutable_data()->mutable_get_report_resp());
      return {serialise(message)};
    default:
      message.set_event_id(LleProto::IND_REPORT_RESP);
      fill(message.mutable_data()->mutable_ind_report_resp());
      return {success, serialise(message)};
  }
}

std::vector<orbsim::Blob> lli(const Asked& asked, uint64_t connection) {
  const orbsim::Blob success = status<LliProto::ClientMsg>(LliProto::SUCCESS);
  if (asked.event == LliProto::ENABLE) return {success};
  LliProto::ClientMsg message;
  message.set_event_id(LliProto::LLI_IND_RESP);
  message.mutable_data()->mutable_lli_ind_resp()->set_estimated_time_to_interruption(connection);
  return {success, serialise(message)};
}

}  // namespace

uint32_t typeOf(Service service) {
  constexpr uint32_t kTypes[] = {orbsim::kSdkTypeLce, orbsim::kSdkTypeLle, orbsim::kSdkTypeLli};
  return kTypes[service];
}

bool parse(const orbsim::Frame& frame, Asked& asked) {
  if (!frame.isBlob()) return false;
  if (frame.sdkType() == orbsim::kSdkTypeLce) {
    LceProto::ServiceMsg message;
    asked.service = kLce;
    if (!read(frame, message, asked)) return false;
    asked.tag = message.data().set_reporting_criteria().criteria_value_1();
    return true;
  }
  if (frame.sdkType() == orbsim::kSdkTypeLle) {
    LleProto::ServiceMsg message;
    asked.service = kLle;
    if (!read(frame, message, asked)) return false;
    asked.tag = message.data().set_reporting_criteria().reporting_criteria();
    return true;
  }
  LliProto::ServiceMsg message;
  asked.service = kLli;
  return frame.sdkType() == orbsim::kSdkTypeLli && read(frame, message, asked);
}

std::vector<orbsim::Blob> answers(const Asked& asked, uint64_t connection) {
  switch (asked.service) {
    case kLce:
      return lce(asked, static_cast<uint32_t>(connection));
    case kLle:
      return lle(asked, connection);
    default:
      return lli(asked, connection);
  }
}

orbsim::Blob serviceDown() { return status<LceProto::ClientMsg>(LceProto::SERVICE_DOWN); }

}  // namespace torture::modelanswers
