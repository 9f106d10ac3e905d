// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
//
// Where encrypted logs are, and which of those that earlier processes left behind are kept.
#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <ctime>
#include <memory>

#include "Log.h"
#include "Thread.h"

namespace {

constexpr char kMainTag[] = "orb";
constexpr char kMainDirectory[] = "/data/vendor/orb_logs/main";
constexpr char kOtherDirectory[] = "/data/vendor/orb_logs/other";

constexpr size_t kKeptFiles = 3;
constexpr int64_t kMaxAge = 3600;  // seconds

// So many old files are removed while the application waits; more than any run leaves behind.
constexpr size_t kRemovedAtOnce = 32;
// What follows the zero in a name: "0" to "10", or "-1" and "-2" after names that end in no digit.
constexpr size_t kIndexDigits = 2;

struct DirectoryClose {
  void operator()(DIR* directory) const { closedir(directory); }
};
using Directory = std::unique_ptr<DIR, DirectoryClose>;

Directory openDirectory(const std::string& path) {
  UniqueFd fd(aboveStandardStreams(open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)));
  Directory directory(fd.get() < 0 ? nullptr : fdopendir(fd.get()));
  if (directory) fd.release();
  return directory;
}

bool isOtherFile(std::string_view name) {
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
  const std::string path = getLogFilePath();
  const Directory directory = openDirectory(path);
  if (!directory) return;
  const std::string prefix = "orb_log_" + getFileTag();
  timespec now = {};
  clock_gettime(CLOCK_REALTIME, &now);
  // By age: of files of one age only the first that is met counts.
  std::map<int64_t, std::string> files;
  while (const dirent* entry = readdir(directory.get())) {
    const std::string_view name = entry->d_name;
    if (isOtherFile(name) || name.find(prefix) == std::string_view::npos) continue;
    // Whoever can write to the directory can put links there, to anything.
    struct stat status = {};
    if (fstatat(dirfd(directory.get()), entry->d_name, &status, AT_SYMLINK_NOFOLLOW) != 0 ||
        S_ISLNK(status.st_mode)) {
      continue;
    }
    const int64_t age = std::max<int64_t>(now.tv_sec - status.st_mtime, 0);
    const auto place = files.lower_bound(age);
    if (place != files.end() && place->first == age) continue;
    files.emplace_hint(place, age, path + "/" + entry->d_name);
  }
  if (!files.empty()) reviewExistingFiles(std::move(files));
}

void Log::reviewExistingFiles(std::map<int64_t, std::string> files) {
  fileIndex = static_cast<unsigned char>(files.begin()->second.back()) - '0' + 1;
  if (fileIndex >= maxFiles) fileIndex = 0;
  const auto firstOld = files.size() <= kKeptFiles ? files.upper_bound(kMaxAge)
                                                   : std::next(files.begin(), kKeptFiles);
  files.erase(files.begin(), firstOld);
  removeOldFiles(std::move(files));
}

// A name that this run may begin a file under is free when this returns. Removing takes longer than
// finding, so what is left of very many files goes while the application goes on.
void Log::removeOldFiles(std::map<int64_t, std::string> files) const {
  const bool many = files.size() > kRemovedAtOnce;
  const std::string stem = getLogFilePath() + "/orb_log_" + getFileTag() + "_0";
  for (auto file = files.begin(); file != files.end();) {
    const std::string& path = file->second;
    const bool mayBegin =
        path.size() <= stem.size() + kIndexDigits && path.compare(0, stem.size(), stem) == 0;
    if (many && !mayBegin) {
      ++file;
    } else {
      unlink(path.c_str());
      file = files.erase(file);
    }
  }
  if (files.empty()) return;
  const auto left = std::make_shared<const std::map<int64_t, std::string>>(std::move(files));
  const auto remove = [left] {
    for (const auto& [age, path] : *left) unlink(path.c_str());
  };
  std::thread remover;
  if (startThread(remover, "orb-log-remove", remove)) {
    remover.detach();
  } else {
    remove();
  }
}
