// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
//
// System properties on a desktop. A property comes from the environment, its dots replaced by
// underscores (persist_vendor_data_orb_logging=1), else from the file that ORB_PROPERTIES_FILE
// names: lines of key=value, '#' begins a comment line, the last line of a key counts. The
// environment counts as it is when the library is loaded; into the file every call looks again.
#include <cutils/properties.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <map>
#include <memory>
#include <string>

#include "Environment.h"

namespace {

struct FileCloser {
  void operator()(FILE* file) const { std::fclose(file); }
};

std::string trimmed(const std::string& text) {
  constexpr char kBlanks[] = " \t\r\n";
  const size_t first = text.find_first_not_of(kBlanks);
  if (first == std::string::npos) return {};
  return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

using Variables = std::map<std::string, std::string>;

// Never destroyed: properties may be asked for while the process exits.
const Variables& readVariables() {
  auto& all = *new Variables;
  for (char** entry = environ; entry != nullptr && *entry != nullptr; ++entry) {
    const std::string name(*entry, std::strcspn(*entry, "="));
    const char* const value = host::variable(name.c_str());
    if (value != nullptr) all.emplace(name, value);
  }
  // It is read by every call, so what is missing now may be there later.
  const auto path = all.find("ORB_PROPERTIES_FILE");
  if (path != all.end() && access(path->second.c_str(), R_OK) != 0)
    host::refuse("ORB_PROPERTIES_FILE", path->second.c_str(), std::strerror(errno));
  return all;
}

const Variables& variables = readVariables();

bool findInEnvironment(const std::string& key, std::string& value) {
  std::string name(key);
  std::replace(name.begin(), name.end(), '.', '_');
  const auto found = variables.find(name);
  if (found != variables.end()) value = found->second;
  return found != variables.end();
}

bool findInFile(const std::string& key, std::string& value) {
  const auto path = variables.find("ORB_PROPERTIES_FILE");
  if (path == variables.end()) return false;
  const std::unique_ptr<FILE, FileCloser> file(std::fopen(path->second.c_str(), "re"));
  if (file == nullptr) return false;
  bool found = false;
  char line[512];
  while (std::fgets(line, sizeof line, file.get()) != nullptr) {
    const std::string text(line);
    const size_t equals = text.find('=');
    if (text[0] == '#' || equals == std::string::npos) continue;
    if (trimmed(text.substr(0, equals)) != key) continue;
    value = trimmed(text.substr(equals + 1));
    found = true;
  }
  return found;
}

}  // namespace

int property_get(const char* key, char* value, const char* default_value) {
  std::string text;
  if (!findInEnvironment(key, text) && !findInFile(key, text)) text.clear();
  if (text.empty() && default_value != nullptr) text = default_value;
  const size_t size = std::min(text.size(), size_t{PROPERTY_VALUE_MAX - 1});
  std::memcpy(value, text.data(), size);
  value[size] = '\0';
  return static_cast<int>(size);
}

int8_t property_get_bool(const char* key, int8_t default_value) {
  char value[PROPERTY_VALUE_MAX];
  property_get(key, value, "");
  for (const char* yes : {"1", "y", "yes", "on", "true"})
    if (std::strcmp(value, yes) == 0) return 1;
  for (const char* no : {"0", "n", "no", "off", "false"})
    if (std::strcmp(value, no) == 0) return 0;
  return default_value;
}
