// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

#include "orbsim/Requests.h"

#include "lce.pb.h"
#include "lle.pb.h"
#include "lli.pb.h"
#include "orbsim/Service.h"
#include "orbsim/TypedService.h"

namespace orbsim {
namespace {

constexpr char kSetCriteria[] = "set-criteria";

template <class List>
std::string listText(const List& list) {
  std::string text = "[";
  for (const uint32_t value : list) {
    if (text.size() > 1) text += ',';
    text += std::to_string(value);
  }
  return text + ']';
}

template <class Message>
bool parse(const Frame& frame, Message& message) {
  const Blob blob = frame.blob();
  return message.ParseFromArray(blob.data(), static_cast<int>(blob.size()));
}

template <class Request>
const char* enableWord(const Request& request) {
  if (!request.data().has_enable_msg()) return "unknown";
  return request.data().enable_msg().enable() ? "enable" : "disable";
}

void lceWords(const LceProto::ServiceMsg& request, RequestWords& words) {
  switch (request.event_id()) {
    case LceProto::ENABLE:
      words.request = enableWord(request);
      break;
    case LceProto::SET_REPORTING_CRITERIA: {
      const auto& criteria = request.data().set_reporting_criteria();
      words.request = kSetCriteria;
      words.fields = {{"transaction", std::to_string(request.transaction_id())},
                      {"value1", std::to_string(criteria.criteria_value_1())},
                      {"value2", std::to_string(criteria.criteria_value_2())},
                      {"first", listText(criteria.first_list())},
                      {"second", listText(criteria.second_list())},
                      {"network", LceProto::AccessNetwork_Name(criteria.access_network())}};
      break;
    }
    case LceProto::GET_LAST_ESTIMATION_REPORT:
      words.request = "get-last-report";
      break;
    case LceProto::PERFORM_REPORTING_ACTION: {
      const auto action = request.data().perform_reporting_action().action();
      if (action == LceProto::STOP) words.request = "stop";
      if (action == LceProto::START) words.request = "start";
      if (action == LceProto::RESET) words.request = "reset";
      break;
    }
    default:
      break;
  }
}

void lleWords(const LleProto::ServiceMsg& request, RequestWords& words) {
  switch (request.event_id()) {
    case LleProto::ENABLE:
      words.request = enableWord(request);
      break;
    case LleProto::SET_REPORTING_CRITERIA:
      words.request = kSetCriteria;
      words.fields = {
          {"criteria",
           std::to_string(request.data().set_reporting_criteria().reporting_criteria())}};
      break;
    case LleProto::GET_LAST_ESTIMATION_REPORT:
      words.request = "get-last-report";
      break;
    default:
      break;
  }
}

void lliWords(const LliProto::ServiceMsg& request, RequestWords& words) {
  switch (request.event_id()) {
    case LliProto::ENABLE:
      words.request = enableWord(request);
      break;
    case LliProto::REG_LINK_INTERRUPT_IND:
      words.request =
          request.data().reg_link_interrupt_ind().register_ind() ? "register" : "unregister";
      break;
    default:
      break;
  }
}

// The enumerator of LCE's error field for an answer to the criteria; null for a status.
const char* criteriaError(const Refusal& refusal) {
  if (refusal.sdkType != kSdkTypeLce || refusal.request != kSetCriteria) return nullptr;
  if (refusal.with == "TYPE_MISMATCH") return "REPORTING_CRITERIA_TYPE_MISMATCH";
  if (refusal.with == "INVALID_ARGUMENTS") return "INVALID_ARGUMENTS";
  return nullptr;
}

template <class Answer>
Blob statusBlob(int status) {
  using Event = decltype(std::declval<Answer>().event_id());
  using Status = decltype(std::declval<Answer>().data().status_msg().status());
  Answer message;
  message.set_event_id(static_cast<Event>(kStatusEvent));
  message.mutable_data()->mutable_status_msg()->set_status(static_cast<Status>(status));
  return serialize(message);
}

}  // namespace

// All services have the same statuses with the same numbers.
Blob statusMessage(uint32_t sdkType, const std::string& word) {
  LceProto::Status status = LceProto::INVALID;
  if (!LceProto::Status_Parse(word, &status)) return {};
  if (sdkType == kSdkTypeLce) return statusBlob<LceProto::ClientMsg>(status);
  if (sdkType == kSdkTypeLle) return statusBlob<LleProto::ClientMsg>(status);
  return statusBlob<LliProto::ClientMsg>(status);
}

RequestWords wordsOf(const Frame& frame) {
  RequestWords words;
  words.sdkType = frame.sdkType();
  words.request = "unknown";
  LceProto::ServiceMsg lce;
  LleProto::ServiceMsg lle;
  LliProto::ServiceMsg lli;
  if (words.sdkType == kSdkTypeLce && parse(frame, lce)) lceWords(lce, words);
  if (words.sdkType == kSdkTypeLle && parse(frame, lle)) lleWords(lle, words);
  if (words.sdkType == kSdkTypeLli && parse(frame, lli)) lliWords(lli, words);
  return words;
}

uint32_t serviceNamed(const std::string& word) {
  for (const uint32_t type : {kSdkTypeLce, kSdkTypeLle, kSdkTypeLli}) {
    if (word == serviceName(type)) return type;
  }
  return 0;
}

std::vector<std::string> requestWords(uint32_t sdkType) {
  switch (sdkType) {
    case kSdkTypeLce:
      return {"enable", "disable", kSetCriteria, "get-last-report", "start", "stop", "reset"};
    case kSdkTypeLle:
      return {"enable", "disable", kSetCriteria, "get-last-report"};
    case kSdkTypeLli:
      return {"enable", "disable", "register", "unregister"};
    default:
      return {};
  }
}

std::string wrongWith(const Refusal& refusal) {
  if (criteriaError(refusal) != nullptr) return {};
  LceProto::Status status = LceProto::INVALID;
  if (LceProto::Status_Parse(refusal.with, &status)) return {};
  const bool criteriaOnly = refusal.with == "TYPE_MISMATCH" || refusal.with == "INVALID_ARGUMENTS";
  if (criteriaOnly) return refusal.with + " is for set-criteria of lce only";
  return "no such status: " + refusal.with;
}

Blob refusalOf(const Frame& frame, const Refusal& refusal) {
  const char* const error = criteriaError(refusal);
  if (error == nullptr) return statusMessage(frame.sdkType(), refusal.with);
  LceProto::ServiceMsg request;
  LceProto::ClientMsg answer;
  if (parse(frame, request)) answer.set_transaction_id(request.transaction_id());
  answer.set_event_id(LceProto::SET_REPORTING_CRITERIA_ASYNC_RESULT);
  answer.mutable_data()->mutable_set_reporting_criteria_resp()->set_error(error);
  return serialize(answer);
}

}  // namespace orbsim
