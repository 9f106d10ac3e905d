// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "DiagRequest.h"

#include <charconv>
#include <cstdint>
#include <string_view>
#include <utility>
#include <vector>

#include "DiagCommands.h"
#include "DiagPackets.h"

namespace diaghost {

namespace {

// Takes the text up to the next blank off the front.
std::string_view takeWord(std::string_view& text) {
  const size_t end = text.find(' ');
  const std::string_view word = text.substr(0, end);
  text = end == std::string_view::npos ? std::string_view() : text.substr(end + 1);
  return word;
}

template <class Number>
bool readHex(std::string_view text, Number& value) {
  const char* const end = text.data() + text.size();
  const auto result = std::from_chars(text.data(), end, value, 16);
  return result.ec == std::errc() && result.ptr == end;
}

bool readPayload(std::string_view text, std::vector<uint8_t>& payload) {
  if (text.size() % 2 != 0 || text.size() > 2 * kMaxPayloadSize) return false;
  payload.resize(text.size() / 2);
  for (size_t i = 0; i < payload.size(); ++i)
    if (!readHex(text.substr(2 * i, 2), payload[i])) return false;
  return true;
}

std::string command(std::string_view words) {
  CommandId id = {};
  std::vector<uint8_t> payload;
  if (!readHex(takeWord(words), id.code) || !readHex(takeWord(words), id.subsystem) ||
      !readHex(takeWord(words), id.number) || !readPayload(words, payload)) {
    return "error not a command: code, subsystem, number and payload in hexadecimal";
  }
  const size_t size = payload.size();
  if (!runCommand(id, std::move(payload))) return "error no such command is registered";
  return "ok command delivered, " + std::to_string(size) + " bytes";
}

}  // namespace

std::string answer(const std::string& request) {
  if (request.size() > kMaxRequestSize) return "error the request is too long";
  std::string_view words(request);
  const std::string_view verb = takeWord(words);
  if (verb == "command") return command(words);
  if (words.empty() && (verb == "on" || verb == "off" || verb == "status")) {
    if (verb != "status") switchPackets(verb == "on");
    return "ok " + describePackets();
  }
  return "error unknown request";
}

}  // namespace diaghost
