// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

#include "orbsim/Scenario.h"

#include <sys/stat.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>

#include "Json.h"
#include "orbsim/ProgramPath.h"

namespace orbsim {
namespace {

constexpr char kFolderVariable[] = "ORB_SCENARIOS";

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

// A ready scenario of that name; empty when there is none.
std::string readyScenario(const std::string& name) {
  for (const std::string& folder : Scenario::folders()) {
    const std::string path = folder + "/" + name + ".json";
    if (isFile(path)) return path;
  }
  return {};
}

}  // namespace

std::vector<std::string> Scenario::folders() {
  if (const char* const named = std::getenv(kFolderVariable)) return {named};
  std::vector<std::string> all;
  std::string folder = folderOf(programPath());
  all.push_back(folder + "/../share/orbd-sim/scenarios");
  // A build tree lies somewhere below the sources.
  for (int i = 0; i < 6 && !folder.empty(); ++i) {
    all.push_back(folder + "/tools/orbd-sim/scenarios");
    folder = folder.substr(0, folder.rfind('/'));
  }
  return all;
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
  if (!scenario) error = path + ": " + error;
  return scenario;
}

std::optional<Scenario> Scenario::fromText(const std::string& text, std::string& error) {
  const auto json = parseJson(text, error);
  if (!json || !checkScenario(*json, error)) return std::nullopt;
  auto data = readScenario(*json, error);
  if (!data) return std::nullopt;
  return Scenario(std::make_shared<const ScenarioData>(std::move(*data)));
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
