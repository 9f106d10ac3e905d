// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "orbctl/Csv.h"

#include <algorithm>
#include <cstring>

namespace orbctl {
namespace {

// No quoting is needed: all texts are words of this program without commas and quotes.
struct CellText {
  std::string operator()(const std::string& value) const { return value; }
  std::string operator()(uint64_t value) const { return std::to_string(value); }
  std::string operator()(double value) const {
    char text[64];
    std::snprintf(text, sizeof text, "%.3f", value);
    return text;
  }
};

}  // namespace

std::string csvHeader() {
  std::string line;
  for (const char* const name : kFieldNames) line += (line.empty() ? "" : ",") + std::string(name);
  return line + "\n";
}

std::string csvLineOf(const std::vector<Field>& fields) {
  std::string line;
  for (const char* const name : kFieldNames) {
    if (name != kFieldNames.front()) line += ',';
    const auto field = std::find_if(fields.begin(), fields.end(), [&](const Field& each) {
      return std::strcmp(each.name, name) == 0;
    });
    if (field != fields.end()) line += std::visit(CellText{}, field->value);
  }
  return line + "\n";
}

std::vector<std::vector<std::string>> csvRecordsOf(const std::string& text) {
  std::vector<std::vector<std::string>> records;
  std::vector<std::string> record(1);
  bool quoted = false;
  const auto end = [&] {
    if (record.size() > 1 || !record.front().empty()) records.push_back(std::move(record));
    record.assign(1, "");
  };
  for (size_t i = 0; i < text.size(); ++i) {
    const char c = text[i];
    if (quoted) {
      if (c != '"') {
        record.back() += c;
      } else if (i + 1 < text.size() && text[i + 1] == '"') {
        record.back() += text[++i];
      } else {
        quoted = false;
      }
    } else if (c == '"' && record.back().empty()) {
      quoted = true;
    } else if (c == ',') {
      record.emplace_back();
    } else if (c == '\n') {
      end();
    } else if (c != '\r' || i + 1 >= text.size() || text[i + 1] != '\n') {
      record.back() += c;
    }
  }
  end();
  return records;
}

}  // namespace orbctl
