// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "orbctl/Json.h"

#include <nlohmann/json.hpp>

#include "orbctl/Names.h"

namespace orbctl {
namespace {

// Keys keep their order. A path may contain bytes that are not UTF-8.
std::string lineOf(const nlohmann::ordered_json& object) {
  return object.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace) + "\n";
}

}  // namespace

std::string jsonOf(const std::vector<Field>& fields) {
  nlohmann::ordered_json object;
  for (const Field& field : fields)
    std::visit([&](const auto& value) { object[field.name] = value; }, field.value);
  return lineOf(object);
}

std::string jsonOf(const StatusReport& report) {
  nlohmann::ordered_json object;
  object["socket"] = report.path;
  object["state"] = wordOf(report.socket.state);
  object["reason"] = report.socket.reason;
  if (!report.socket.bytes.empty()) object["came"] = hexText(report.socket.bytes);
  if (report.socket.state == SocketState::kWell) object["session"] = report.socket.sessionId;
  object["services"] = nlohmann::ordered_json::array();
  for (const ServiceFinding& finding : report.services) {
    nlohmann::ordered_json service;
    service["service"] = nameOf(finding.service);
    service["state"] = wordOf(finding.state);
    if (finding.status) service["status"] = nameOf(*finding.status);
    if (finding.status) service["ms"] = finding.after.count();
    object["services"].push_back(service);
  }
  if (!report.asked) object["not_asked"] = report.notAskedBecause;
  object["next"] = nextStepOf(report);
  object["exit"] = exitStatusOf(report);
  return lineOf(object);
}

}  // namespace orbctl
