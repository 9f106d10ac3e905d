// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

// Makes the messages that a service sends without a request, from words.

#include <cerrno>
#include <cstdlib>
#include <limits>

#include "lce.pb.h"
#include "lle.pb.h"
#include "lli.pb.h"
#include "orbsim/Requests.h"
#include "orbsim/Technology.h"
#include "orbsim/TypedService.h"

namespace orbsim {

namespace {

// Reads the fields of one indication one by one; remaining fields are unknown.
class Fields {
 public:
  explicit Fields(std::map<std::string, std::string> fields) : mFields(std::move(fields)) {}

  bool take(const char* name, std::string& value) {
    const auto found = mFields.find(name);
    if (found == mFields.end()) return false;
    value = found->second;
    mFields.erase(found);
    return true;
  }
  uint64_t number(const char* name, uint64_t otherwise,
                  uint64_t limit = std::numeric_limits<uint64_t>::max()) {
    std::string text;
    if (!take(name, text)) return otherwise;
    errno = 0;
    const bool digits = !text.empty() && text.find_first_not_of("0123456789") == std::string::npos;
    const uint64_t value = digits ? std::strtoull(text.c_str(), nullptr, 10) : 0;
    if (!digits || errno != 0 || value > limit) wrong(name, text);
    return value;
  }
  uint32_t number32(const char* name, uint32_t otherwise) {
    return static_cast<uint32_t>(number(name, otherwise, std::numeric_limits<uint32_t>::max()));
  }
  // The index of the word in the list.
  template <size_t kCount>
  size_t choice(const char* name, const char* const (&words)[kCount]) {
    std::string text;
    if (!take(name, text)) return 0;
    for (size_t i = 0; i < kCount; ++i) {
      if (text == words[i]) return i;
    }
    wrong(name, text);
    return 0;
  }
  LliProto::LliRatType technology(const char* name, LliProto::LliRatType otherwise) {
    std::string text;
    if (!take(name, text)) return otherwise;
    const Technology* const named = technologyNamed(text);
    if (named != nullptr) return named->rat;
    wrong(name, text);
    return otherwise;
  }
  // Empty if all fields were known and correct.
  std::string error() const {
    if (!mError.empty()) return mError;
    return mFields.empty() ? "" : "no such field: " + mFields.begin()->first;
  }

 private:
  void wrong(const char* name, const std::string& text) {
    if (mError.empty()) mError = std::string(name) + ": wrong value: " + text;
  }

  std::map<std::string, std::string> mFields;
  std::string mError;
};

Blob lceReport(Fields& fields) {
  static const char* const kDirections[] = {"down", "up"};
  LceProto::ClientMsg message;
  message.set_event_id(LceProto::ESTIMATION_REPORTS_IND);
  auto* const report = message.mutable_data()->mutable_estimation_reports_resp();
  report->set_rate(fields.number32("rate", 1000));
  report->set_confidence_level(
      static_cast<LceProto::ConfidenceLevel>(fields.number("confidence", 7, 7)));
  report->set_link_direction(fields.choice("direction", kDirections) == 0 ? LceProto::DOWN_LINK
                                                                          : LceProto::UP_LINK);
  report->set_queue_size_ul(fields.number32("queue", 0));
  std::string error = "NONE";
  fields.take("error", error);
  report->set_error_string(error);
  return serialize(message);
}

Blob lleReport(Fields& fields) {
  static const char* const kValid[] = {"true", "false"};
  LleProto::ClientMsg message;
  message.set_event_id(LleProto::IND_REPORT_RESP);
  auto* const report = message.mutable_data()->mutable_ind_report_resp();
  const bool valid = fields.choice("valid", kValid) == 0;
  report->set_status(valid);
  report->set_ul_report_status(valid ? 1 : 0);
  report->set_dl_report_status(valid ? 1 : 0);
  report->set_ul_latency_estimation(fields.number("ul-latency", 20000));
  report->set_ul_variance_estimation(fields.number("ul-variance", 0));
  report->set_dl_latency_estimation(fields.number("dl-latency", 20000));
  report->set_dl_variance_estimation(fields.number("dl-variance", 0));
  report->set_report_interval(fields.number32("interval", 0));
  report->set_rat(technologyOf(fields.technology("rat", LliProto::LLI_3GPP_LTE)).latencyRat);
  return serialize(message);
}

Blob lliPhase(Fields& fields) {
  static const char* const kPhases[] = {"entry", "imminent", "start", "success", "failure", "exit"};
  static constexpr LliProto::HandoffInfo kInfos[] = {
      LliProto::PRE_HANDOFF,     LliProto::HANDOFF_IMMINENT, LliProto::HANDOFF_START,
      LliProto::HANDOFF_SUCCESS, LliProto::HANDOFF_FAILURE,  LliProto::PRE_HANDOFF};
  LliProto::ClientMsg message;
  message.set_event_id(LliProto::LLI_IND_RESP);
  auto* const step = message.mutable_data()->mutable_lli_ind_resp();
  const size_t phase = fields.choice("phase", kPhases);
  step->set_handoff_info(kInfos[phase]);
  step->set_pre_handoff_state(phase == 5 ? LliProto::EXIT : LliProto::ENTRY);
  step->set_source_rat(fields.technology("source", LliProto::LLI_3GPP_LTE));
  step->set_target_rat(fields.technology("target", LliProto::LLI_3GPP_5G));
  step->set_estimated_time_to_interruption(fields.number("time", 0));
  step->set_estimated_interruption_duration(fields.number("duration", 0));
  return serialize(message);
}

}  // namespace

Blob indicationOf(uint32_t sdkType, const std::map<std::string, std::string>& words,
                  std::string& error) {
  Fields fields(words);
  std::string status;
  Blob blob;
  if (fields.take("status", status)) {
    blob = statusMessage(sdkType, status);
    if (blob.empty()) {
      error = "no such status: " + status;
      return {};
    }
  } else if (sdkType == kSdkTypeLce) {
    blob = lceReport(fields);
  } else if (sdkType == kSdkTypeLle) {
    blob = lleReport(fields);
  } else if (sdkType == kSdkTypeLli) {
    blob = lliPhase(fields);
  }
  error = fields.error();
  if (!error.empty()) return {};
  return blob;
}

}  // namespace orbsim
