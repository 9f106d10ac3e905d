// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

#include "orbsim/Recording.h"

#include <cerrno>
#include <cmath>
#include <cstring>
#include <fstream>
#include <nlohmann/json.hpp>

#include "orbsim/Trace.h"

namespace orbsim {
namespace {

using Json = nlohmann::ordered_json;

constexpr char kFormat[] = "orbd-sim-recording";
constexpr int kVersion = 1;
constexpr const char* kKinds[] = {"open", "bytes", "end", "closed"};
constexpr const char* kDirections[] = {"to-daemon", "to-client"};
// Ten years in seconds: far below the limit of microseconds.
constexpr double kMaxTime = 10 * 366 * 86400.0;

template <size_t kCount>
int indexOf(const std::string& word, const char* const (&words)[kCount]) {
  for (size_t i = 0; i < kCount; ++i) {
    if (word == words[i]) return static_cast<int>(i);
  }
  return -1;
}

int digitOf(char digit) {
  if (digit >= '0' && digit <= '9') return digit - '0';
  return digit >= 'a' && digit <= 'f' ? digit - 'a' + 10 : -1;
}

bool bytesOf(const std::string& hex, Blob& bytes) {
  if (hex.size() % 2 != 0) return false;
  for (size_t i = 0; i < hex.size(); i += 2) {
    const int high = digitOf(hex[i]), low = digitOf(hex[i + 1]);
    if (high < 0 || low < 0) return false;
    bytes.push_back(static_cast<uint8_t>(16 * high + low));
  }
  return true;
}

// The reason why a line is not an event; empty if it is one.
std::string readEvent(const Json& object, RecordedEvent& event) {
  const double time = object.at("time").get<double>();
  if (!(time >= 0 && time <= kMaxTime)) return "a time out of range";
  event.time = std::chrono::microseconds(std::llround(time * 1e6));
  event.connection = object.at("connection").get<uint32_t>();
  const int kind = indexOf(object.at("event").get<std::string>(), kKinds);
  if (kind < 0) return "no such event";
  event.kind = static_cast<RecordedEvent::Kind>(kind);
  const bool directed =
      event.kind == RecordedEvent::Kind::kBytes || event.kind == RecordedEvent::Kind::kEnd;
  if (directed) {
    const int direction = indexOf(object.at("direction").get<std::string>(), kDirections);
    if (direction < 0) return "no such direction";
    event.direction = static_cast<Direction>(direction);
  }
  if (event.kind == RecordedEvent::Kind::kBytes &&
      !bytesOf(object.at("bytes").get<std::string>(), event.bytes))
    return "bytes that are not in hexadecimal";
  return {};
}

std::string checkHead(const Json& object) {
  if (!object.is_object() || !object.contains(kFormat)) return "this is no recording";
  return object.at(kFormat) == kVersion ? "" : "a recording of another version";
}

}  // namespace

bool RecordingWriter::open(const std::string& path) {
  mPath = path;
  mFile.reset(std::fopen(path.c_str(), "we"));
  if (!mFile) {
    mError = path + ": " + std::strerror(errno);
    return false;
  }
  writeLine(Json{{kFormat, kVersion}}.dump());
  return mError.empty();
}

void RecordingWriter::write(const RecordedEvent& event) {
  if (!mFile || !mError.empty()) return;
  Json object;
  object["time"] = static_cast<double>(event.time.count()) / 1e6;
  object["connection"] = event.connection;
  object["event"] = kKinds[static_cast<size_t>(event.kind)];
  if (event.kind == RecordedEvent::Kind::kOpen)
    object["pid"] = event.process > 0 ? Json(event.process) : Json(nullptr);
  if (event.kind == RecordedEvent::Kind::kBytes || event.kind == RecordedEvent::Kind::kEnd)
    object["direction"] = kDirections[static_cast<size_t>(event.direction)];
  if (event.kind == RecordedEvent::Kind::kBytes)
    object["bytes"] = hexText(event.bytes.data(), event.bytes.size());
  writeLine(object.dump());
}

void RecordingWriter::writeLine(const std::string& line) {
  const std::string whole = line + "\n";
  if (std::fwrite(whole.data(), 1, whole.size(), mFile.get()) == whole.size() &&
      std::fflush(mFile.get()) == 0)
    return;
  mError = mPath + ": " + std::strerror(errno);
}

bool readRecording(const std::string& path, std::vector<RecordedEvent>& events,
                   std::string& error) {
  events.clear();
  errno = 0;
  std::ifstream file(path);
  size_t number = 0;
  std::string line, reason;
  while (reason.empty() && std::getline(file, line)) {
    const bool cut = file.eof();  // the line has no end
    const Json object = Json::parse(line, nullptr, /*allow_exceptions=*/false);
    if (cut && object.is_discarded() && number > 0) break;
    ++number;
    try {
      RecordedEvent event;
      if (object.is_discarded()) {
        reason = number == 1 ? "this is no recording" : "this is no JSON";
      } else if (number == 1) {
        reason = checkHead(object);
      } else if ((reason = readEvent(object, event)).empty()) {
        events.push_back(std::move(event));
      }
    } catch (const Json::exception&) {
      reason = "a key is missing or of another type";
    }
  }
  if (!reason.empty()) {
    error = path + ":" + std::to_string(number) + ": " + reason;
  } else if (number == 0) {
    error = path + ": " + (errno != 0 ? std::strerror(errno) : "this is no recording");
  }
  return error.empty();
}

}  // namespace orbsim
