// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

#include "Words.h"

#include <utility>

#include "orbsim/Requests.h"

namespace orbsim::testkit {

namespace {

Service serviceOf(uint32_t sdkType) {
  if (sdkType == kSdkTypeLle) return Service::kLle;
  return sdkType == kSdkTypeLli ? Service::kLli : Service::kLce;
}

const char* wordFor(HandoffPhase::Phase phase) {
  switch (phase) {
    case HandoffPhase::Phase::kEntry:
      return "entry";
    case HandoffPhase::Phase::kImminent:
      return "imminent";
    case HandoffPhase::Phase::kStart:
      return "start";
    case HandoffPhase::Phase::kSuccess:
      return "success";
    case HandoffPhase::Phase::kFailure:
      return "failure";
    case HandoffPhase::Phase::kExit:
      return "exit";
  }
  return "";
}

}  // namespace

const char* nameOf(Service service) {
  if (service == Service::kLle) return "lle";
  return service == Service::kLli ? "lli" : "lce";
}

std::string Request::text() const {
  std::string line = std::string(nameOf(service)) + " " + name;
  for (const auto& [field, value] : fields) line += " " + field + "=" + value;
  return line;
}

uint32_t typeOf(Service service) {
  if (service == Service::kLle) return kSdkTypeLle;
  return service == Service::kLli ? kSdkTypeLli : kSdkTypeLce;
}

bool isRequest(const Frame& frame) {
  return frame.isBlob() && frame.sdkType() >= kSdkTypeLce && frame.sdkType() <= kSdkTypeLli;
}

Request requestOf(const Frame& frame) {
  RequestWords words = wordsOf(frame);
  return {frame.sessionId, serviceOf(words.sdkType), std::move(words.request),
          std::move(words.fields)};
}

std::map<std::string, std::string> wordsFor(const Capacity& capacity) {
  return {{"rate", std::to_string(capacity.rate)},
          {"confidence", std::to_string(capacity.confidence)},
          {"direction", capacity.downlink ? "down" : "up"},
          {"queue", std::to_string(capacity.queueSizeUl)},
          {"error", capacity.error}};
}

std::map<std::string, std::string> wordsFor(const Latency& latency) {
  return {{"ul-latency", std::to_string(latency.uplink)},
          {"ul-variance", std::to_string(latency.uplinkVariance)},
          {"dl-latency", std::to_string(latency.downlink)},
          {"dl-variance", std::to_string(latency.downlinkVariance)},
          {"rat", latency.rat},
          {"valid", latency.valid ? "true" : "false"}};
}

std::map<std::string, std::string> wordsFor(const HandoffPhase& phase) {
  return {{"phase", wordFor(phase.phase)},
          {"source", phase.source},
          {"target", phase.target},
          {"time", std::to_string(phase.timeToInterruption.count())},
          {"duration", std::to_string(phase.interruption.count())}};
}

HandoffOrder orderFor(const Handoff& handoff) {
  HandoffOrder order;
  order.target = handoff.target;
  order.notice = handoff.notice;
  order.duration = handoff.duration;
  if (handoff.outcome == Handoff::Outcome::kFailure) order.result = HandoffOrder::Result::kFailure;
  if (handoff.outcome == Handoff::Outcome::kCalledOff)
    order.result = HandoffOrder::Result::kCalledOff;
  return order;
}

}  // namespace orbsim::testkit
