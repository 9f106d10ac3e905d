// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

#include <sys/socket.h>
#include <sys/types.h>

#include <cstdio>
#include <ctime>

#include "orbsim/Trace.h"

namespace orbsim {
namespace {

// A line of text shows at most this number of bytes.
constexpr size_t kShownBytes = 256;

std::string timeText(std::chrono::system_clock::time_point time) {
  using namespace std::chrono;
  const std::time_t seconds = system_clock::to_time_t(floor<std::chrono::seconds>(time));
  const auto rest = duration_cast<milliseconds>(time - floor<std::chrono::seconds>(time));
  tm local = {};
  localtime_r(&seconds, &local);
  char clock[16];
  std::strftime(clock, sizeof(clock), "%H:%M:%S", &local);
  char text[32];
  std::snprintf(text, sizeof(text), "%s.%03d", clock, static_cast<int>(rest.count()));
  return text;
}

std::string quoted(const std::string& text) {
  std::string result = "\"";
  for (const char each : text) {
    const auto byte = static_cast<uint8_t>(each);
    if (byte < 0x20 || byte > 0x7e) {
      result += "\\x" + hexText(&byte, 1);
    } else {
      if (each == '"' || each == '\\') result += '\\';
      result += each;
    }
  }
  return result + '"';
}

std::string shownBytes(const Blob& bytes, uint64_t size) {
  const size_t shown = bytes.size() < kShownBytes ? bytes.size() : kShownBytes;
  std::string text = hexText(bytes.data(), shown);
  if (shown < size) {
    if (shown > 0) text += "... ";
    text += "(" + std::to_string(size) + " bytes)";
  }
  return text;
}

std::string fieldsText(const TraceMessage& message);

struct ValueText {
  std::string operator()(bool value) const { return value ? "true" : "false"; }
  std::string operator()(uint64_t value) const { return std::to_string(value); }
  std::string operator()(const TraceEnumerator& value) const {
    return value.name.empty() ? std::to_string(value.number) : value.name;
  }
  std::string operator()(const std::string& value) const { return quoted(value); }
  std::string operator()(const TraceMessage& value) const {
    return value.fields.empty() ? "{}" : "{ " + fieldsText(value) + " }";
  }
  std::string operator()(const TraceUnknown& value) const {
    const Blob* const bytes = std::get_if<Blob>(&value.value);
    return std::string(value.type) + " " +
           (bytes != nullptr ? shownBytes(*bytes, bytes->size())
                             : std::to_string(std::get<uint64_t>(value.value)));
  }
};

// In the text format of protocol buffers: "name: value" and "name { ... }".
std::string fieldsText(const TraceMessage& message) {
  std::string text;
  for (const TraceField& field : message.fields) {
    for (const TraceValue& value : field.values) {
      if (!text.empty()) text += ' ';
      const bool known = *field.name != '\0';
      text += known ? field.name : "unknown field " + std::to_string(field.number);
      text += std::holds_alternative<TraceMessage>(value) ? " " : ": ";
      text += std::visit(ValueText{}, value);
    }
  }
  return text;
}

std::string frameText(const TraceItem& item) {
  const Header& header = item.header;
  const bool toDaemon = item.direction == Direction::kToDaemon;
  std::string text = " message " + std::to_string(header.messageId);
  // Values that are the same in every correct frame are shown only if they are different.
  const uint64_t other = toDaemon ? header.destination : header.source;
  if (other != kDaemonProcessId)
    text += (toDaemon ? " destination " : " source ") + std::to_string(other);
  if (header.subsystemId != 0) text += " subsystem " + std::to_string(header.subsystemId);
  if (!item.sdkType) return text;
  const char* const service = traceServiceName(*item.sdkType);
  if (service == nullptr) return text + " service " + std::to_string(*item.sdkType);
  return text + " " + service + " " + traceMessageName(item.direction);
}

}  // namespace

std::string traceText(const TraceItem& item) {
  std::string text = timeText(item.time);
  text += item.direction == Direction::kToDaemon ? " to-daemon" : " to-client";
  text += " connection " + std::to_string(item.connection) + " " + processText(item.process);
  text += " endpoint " + std::to_string(item.endpoint);
  text += " session " + std::to_string(item.session);
  if (item.kind == TraceItem::Kind::kHandshake) text += std::string(" handshake ") + item.step;
  if (item.kind == TraceItem::Kind::kFrame) text += frameText(item);
  if (!item.message.fields.empty()) text += " " + fieldsText(item.message);
  if (item.reason.empty()) return text;
  return text + " not decoded (" + item.reason + "): " + shownBytes(item.bytes, item.size);
}

std::string logText(std::chrono::system_clock::time_point time, const std::string& line) {
  return timeText(time) + " " + line;
}

int processBehind(int fd) {
  ucred peer = {};
  socklen_t size = sizeof(peer);
  return ::getsockopt(fd, SOL_SOCKET, SO_PEERCRED, &peer, &size) == 0 ? peer.pid : 0;
}

std::string processText(int process) {
  return process > 0 ? "pid " + std::to_string(process) : "pid unknown (of another pid namespace)";
}

std::string hexText(const uint8_t* data, size_t size) {
  static constexpr char kDigits[] = "0123456789abcdef";
  std::string text;
  text.reserve(2 * size);
  for (size_t i = 0; i < size; ++i) {
    text += kDigits[data[i] >> 4];
    text += kDigits[data[i] & 15];
  }
  return text;
}

}  // namespace orbsim
