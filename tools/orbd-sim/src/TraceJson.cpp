// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

#include <cstdio>
#include <ctime>
#include <nlohmann/json.hpp>

#include "orbsim/Trace.h"

namespace orbsim {
namespace {

using Json = nlohmann::ordered_json;

// UTC with microseconds.
std::string timeText(std::chrono::system_clock::time_point time) {
  using namespace std::chrono;
  const std::time_t seconds = system_clock::to_time_t(floor<std::chrono::seconds>(time));
  const auto rest = duration_cast<microseconds>(time - floor<std::chrono::seconds>(time));
  tm universal = {};
  gmtime_r(&seconds, &universal);
  char clock[32];
  std::strftime(clock, sizeof(clock), "%Y-%m-%dT%H:%M:%S", &universal);
  char text[48];
  std::snprintf(text, sizeof(text), "%s.%06dZ", clock, static_cast<int>(rest.count()));
  return text;
}

Json fieldsJson(const TraceMessage& message);

struct ValueJson {
  Json operator()(bool value) const { return value; }
  Json operator()(uint64_t value) const { return value; }
  Json operator()(const TraceEnumerator& value) const {
    return value.name.empty() ? Json(value.number) : Json(value.name);
  }
  Json operator()(const std::string& value) const { return value; }
  Json operator()(const TraceMessage& value) const { return fieldsJson(value); }
  Json operator()(const TraceUnknown& value) const {
    Json unknown = {{"type", value.type}};
    if (const Blob* const bytes = std::get_if<Blob>(&value.value)) {
      unknown["hex"] = hexText(bytes->data(), bytes->size());
    } else {
      unknown["value"] = std::get<uint64_t>(value.value);
    }
    return unknown;
  }
};

Json fieldsJson(const TraceMessage& message) {
  Json object = Json::object();
  for (const TraceField& field : message.fields) {
    if (*field.name == '\0') {
      Json unknown = {{"field", field.number}};
      unknown.update(std::visit(ValueJson{}, field.values.front()));
      object["unknown"].push_back(std::move(unknown));
    } else if (field.repeated) {
      Json& list = object[field.name] = Json::array();
      for (const TraceValue& value : field.values) list.push_back(std::visit(ValueJson{}, value));
    } else {
      object[field.name] = std::visit(ValueJson{}, field.values.front());
    }
  }
  return object;
}

void addFrame(const TraceItem& item, Json& object) {
  const Header& header = item.header;
  object["message_id"] = header.messageId;
  object["source"] = header.source;
  object["destination"] = header.destination;
  object["subsystem"] = header.subsystemId;
  object["length"] = header.payloadLength;
  if (!item.sdkType) return;
  object["service_number"] = *item.sdkType;
  if (const char* const service = traceServiceName(*item.sdkType)) {
    object["service"] = service;
    object["message"] = traceMessageName(item.direction);
    object["fields"] = fieldsJson(item.message);
  }
}

// Always one line: bytes that are not UTF-8 become U+FFFD, and everything except printable ASCII is
// escaped.
std::string lineOf(const Json& object) {
  return object.dump(-1, ' ', /*ensure_ascii=*/true, Json::error_handler_t::replace);
}

}  // namespace

std::string traceJson(const TraceItem& item) {
  static constexpr const char* kKinds[] = {"handshake", "frame", "bytes"};
  Json object;
  object["time"] = timeText(item.time);
  object["kind"] = kKinds[static_cast<size_t>(item.kind)];
  object["direction"] = item.direction == Direction::kToDaemon ? "to-daemon" : "to-client";
  object["connection"] = item.connection;
  object["pid"] = item.process > 0 ? Json(item.process) : Json(nullptr);
  object["endpoint"] = item.endpoint;
  object["session"] = item.session;
  if (item.kind == TraceItem::Kind::kHandshake) object["step"] = item.step;
  if (item.kind == TraceItem::Kind::kFrame) addFrame(item, object);
  if (!item.reason.empty()) {
    object["reason"] = item.reason;
    object["size"] = item.size;
    object["hex"] = hexText(item.bytes.data(), item.bytes.size());
  }
  return lineOf(object);
}

std::string logJson(std::chrono::system_clock::time_point time, const std::string& line) {
  return lineOf({{"time", timeText(time)}, {"kind", "log"}, {"text", line}});
}

}  // namespace orbsim
