// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

#include "orbsim/Scenario.h"

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <system_error>

#include "Json.h"
#include "orbsim/ProgramPath.h"

namespace orbsim {
namespace {

constexpr char kFolderVariable[] = "ORB_SCENARIOS";
constexpr char kExtension[] = ".json";
// A file in the folder of scenarios that is not a scenario.
constexpr char kSchemaName[] = "schema";

bool isFile(const std::string& path) {
  struct stat status = {};
  return ::stat(path.c_str(), &status) == 0 && !S_ISDIR(status.st_mode);
}

std::optional<std::string> contentOf(const std::string& file, std::string& error) {
  errno = 0;
  struct stat status = {};
  if (::stat(file.c_str(), &status) == 0 && S_ISDIR(status.st_mode)) errno = EISDIR;
  std::ifstream stream;
  if (errno == 0) stream.open(file, std::ios::binary);
  std::string text{std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
  if (stream.is_open() && !stream.bad()) return text;
  error = file + ": " + std::strerror(errno);
  return std::nullopt;
}

// The path of a ready scenario with that name; empty if there is none.
std::string readyScenario(const std::string& name) {
  if (name == kSchemaName) return {};
  for (const std::string& folder : Scenario::folders()) {
    const std::string path = folder + "/" + name + kExtension;
    if (isFile(path)) return path;
  }
  return {};
}

// Parts that do not match the schema are removed, so that the rest can be checked: elements of
// lists become null, so that the others keep their numbers; other members are deleted.
void takeOut(Json& json, const std::string& fault) {
  const size_t colon = fault.find(": ");
  const size_t second = fault.find('/', 1);
  const std::string member = fault.substr(1, std::min(second, colon) - 1);
  if (!json.is_object() || !json.contains(member)) return;
  Json& value = json.at(member);
  if (second < colon && value.is_array() && (member == "timeline" || member == "expect")) {
    value.at(std::stoul(fault.substr(second + 1))) = nullptr;
  } else {
    json.erase(member);
  }
}

}  // namespace

std::vector<std::string> Scenario::folders() {
  if (const char* const named = std::getenv(kFolderVariable)) return {named};
  std::vector<std::string> all;
  std::string folder = folderOf(programPath());
  all.push_back(folder + "/../share/orbd-sim/scenarios");
  // A build tree is somewhere below the sources.
  for (int i = 0; i < 6 && !folder.empty(); ++i) {
    all.push_back(folder + "/tools/orbd-sim/scenarios");
    folder = folder.substr(0, folder.rfind('/'));
  }
  return all;
}

std::vector<std::string> Scenario::readyNames() {
  std::set<std::string> names;
  for (const std::string& folder : folders()) {
    // A missing folder has no entries.
    std::error_code error;
    for (std::filesystem::directory_iterator each(folder, error), end; !error && each != end;
         each.increment(error)) {
      const std::string name = each->path().stem();
      if (each->path().extension() == kExtension && !readyScenario(name).empty())
        names.insert(name);
    }
  }
  return {names.begin(), names.end()};
}

std::string Scenario::pathOf(const std::string& file) {
  if (file.find('/') != std::string::npos || isFile(file)) return file;
  const std::string ready = readyScenario(file);
  return ready.empty() ? file : ready;
}

std::optional<Scenario> Scenario::fromFile(const std::string& file, std::string& error) {
  const std::string path = pathOf(file);
  const auto text = contentOf(path, error);
  if (!text) return std::nullopt;
  auto scenario = fromText(*text, error);
  if (scenario) return scenario;
  std::string lines;
  for (const char letter : error) {
    lines += lines.empty() || lines.back() == '\n' ? path + ": " : "";
    lines += letter;
  }
  error = lines;
  return std::nullopt;
}

std::optional<Scenario> Scenario::fromText(const std::string& text, std::string& error) {
  auto json = parseJson(text, error);
  if (!json) return std::nullopt;
  std::vector<std::string> faults = schemaFaults(*json);
  for (const std::string& fault : faults) takeOut(*json, fault);
  std::optional<ScenarioData> data;
  if (json->is_object()) data = readScenario(*json, faults);
  if (faults.empty() && data)
    return Scenario(std::make_shared<const ScenarioData>(std::move(*data)));
  error.clear();
  for (const std::string& fault : faults) error += (error.empty() ? "" : "\n") + fault;
  return std::nullopt;
}

const std::string& Scenario::name() const { return mData->name; }

const std::string& Scenario::description() const { return mData->description; }

std::optional<std::chrono::milliseconds> Scenario::end() const { return mData->end; }

void Scenario::configure(Options& options) const {
  options.seed = mData->seed;
  options.reportInterval = mData->interval;
  options.model = mData->model;
}

}  // namespace orbsim
