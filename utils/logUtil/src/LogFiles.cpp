// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
//
// Where encrypted logs are, and which of those that earlier processes left behind are kept.
#include <dirent.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <ctime>
#include <memory>

#include "Log.h"

namespace {

constexpr char kMainTag[] = "orb";
constexpr char kMainDirectory[] = "/data/vendor/orb_logs/main";
constexpr char kOtherDirectory[] = "/data/vendor/orb_logs/other";

constexpr size_t kKeptFiles = 3;
constexpr int64_t kMaxAge = 3600;  // seconds

struct DirectoryClose {
  void operator()(DIR* directory) const { closedir(directory); }
};

bool isOtherFile(const std::string& name) {
  return name == "orb_log_config" || name == "orb_log_trace";
}

}  // namespace

// The directory follows the present tag, as file names follow the one that encryption began with.
std::string Log::getLogFilePath() const {
  return std::string(logTag.load()) == kMainTag ? kMainDirectory : kOtherDirectory;
}

std::string Log::getFileTag() const {
  const std::string tag = logTag.load();
  return tag == kMainTag ? "p0" : tag;
}

void Log::checkExistingFiles() {
  const std::string directory = getLogFilePath();
  const std::unique_ptr<DIR, DirectoryClose> entries(opendir(directory.c_str()));
  if (!entries) return;
  const std::string prefix = "orb_log_" + getFileTag();
  timespec now = {};
  clock_gettime(CLOCK_REALTIME, &now);
  // By age: of files of one age only the first that is met counts.
  std::map<int64_t, std::string> files;
  while (const dirent* entry = readdir(entries.get())) {
    const std::string name = entry->d_name;
    if (isOtherFile(name) || name.find(prefix) == std::string::npos) continue;
    const std::string path = directory + "/" + name;
    struct stat status = {};
    if (stat(path.c_str(), &status) != 0) continue;
    files.emplace(std::max<int64_t>(now.tv_sec - status.st_mtime, 0), path);
  }
  if (!files.empty()) reviewExistingFiles(files);
}

void Log::reviewExistingFiles(const std::map<int64_t, std::string>& files) {
  fileIndex = static_cast<unsigned char>(files.begin()->second.back()) - '0' + 1;
  if (fileIndex >= maxFiles) fileIndex = 0;
  const bool few = files.size() <= kKeptFiles;
  size_t kept = 0;
  for (const auto& [age, path] : files) {
    const bool keep = few ? age <= kMaxAge : kept < kKeptFiles;
    if (keep) {
      ++kept;
    } else {
      unlink(path.c_str());
    }
  }
}
