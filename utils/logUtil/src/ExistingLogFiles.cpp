// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "ExistingLogFiles.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <memory>
#include <string_view>
#include <utility>

#include "Thread.h"
#include "UniqueFd.h"

namespace {

constexpr size_t kKeptFiles = 3;
constexpr int64_t kMaxAge = 3600;  // seconds

// Up to this number, old files are removed while the application waits, which takes some
// milliseconds. It is far more than a run leaves.
constexpr size_t kRemovedAtOnce = 1000;
// What follows the zero in a name: "0" to "10", or "-1" and "-2" after names that end in no digit.
constexpr size_t kIndexDigits = 2;

struct DirectoryClose {
  void operator()(DIR* directory) const { closedir(directory); }
};
using Directory = std::unique_ptr<DIR, DirectoryClose>;

UniqueFd descriptorOf(const std::string& path) {
  return UniqueFd(openAboveStandardStreams(
      [&] { return open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC); }));
}

Directory openDirectory(const std::string& path) {
  UniqueFd fd = descriptorOf(path);
  Directory directory(fd.get() < 0 ? nullptr : fdopendir(fd.get()));
  if (directory) fd.release();
  return directory;
}

int64_t ageOf(const struct stat& status, time_t now) {
  return std::max<int64_t>(now - status.st_mtime, 0);
}

// The files that a thread of the library removes. It holds the directory open, which may have
// another path by then, and removes a name only if its file has the age that was found.
struct OldFiles {
  UniqueFd directory;
  ExistingLogFiles::ByAge paths;
  time_t now;

  void remove() const {
    for (const auto& [age, path] : paths) {
      const char* const name = path.c_str() + path.rfind('/') + 1;
      struct stat status = {};
      if (fstatat(directory.get(), name, &status, AT_SYMLINK_NOFOLLOW) == 0 &&
          ageOf(status, now) == age) {
        unlinkat(directory.get(), name, 0);
      }
    }
  }
};

bool isOtherFile(std::string_view name) {
  return name == "orb_log_config" || name == "orb_log_trace";
}

}  // namespace

ExistingLogFiles::ExistingLogFiles(std::string directory, const std::string& fileTag, int maxFiles)
    : mDirectory(std::move(directory)), mPrefix("orb_log_" + fileTag), mMaxFiles(maxFiles) {}

int ExistingLogFiles::checkExistingFiles() const {
  const Directory directory = openDirectory(mDirectory);
  if (!directory) return 0;
  timespec now = {};
  clock_gettime(CLOCK_REALTIME, &now);
  // By age: of several files of one age, only the first one found counts.
  ByAge files;
  while (const dirent* entry = readdir(directory.get())) {
    const std::string_view name = entry->d_name;
    if (isOtherFile(name) || name.find(mPrefix) == std::string_view::npos) continue;
    // Other users may have put links into the directory, to any file.
    struct stat status = {};
    if (fstatat(dirfd(directory.get()), entry->d_name, &status, AT_SYMLINK_NOFOLLOW) != 0 ||
        S_ISLNK(status.st_mode)) {
      continue;
    }
    const int64_t age = ageOf(status, now.tv_sec);
    const auto place = files.lower_bound(age);
    if (place != files.end() && place->first == age) continue;
    files.emplace_hint(place, age, mDirectory + "/" + entry->d_name);
  }
  return files.empty() ? 0 : reviewExistingFiles(std::move(files), now.tv_sec);
}

int ExistingLogFiles::reviewExistingFiles(ByAge files, time_t now) const {
  const int next = static_cast<unsigned char>(files.begin()->second.back()) - '0' + 1;
  const auto firstOld = files.size() <= kKeptFiles ? files.upper_bound(kMaxAge)
                                                   : std::next(files.begin(), kKeptFiles);
  files.erase(files.begin(), firstOld);
  removeOldFiles(std::move(files), now);
  return next >= mMaxFiles ? 0 : next;
}

// When this returns, every name is free that this run may give to a file. If there are very many
// files, a thread removes the others while the application continues.
void ExistingLogFiles::removeOldFiles(ByAge files, time_t now) const {
  const bool many = files.size() > kRemovedAtOnce;
  const std::string stem = mDirectory + "/" + mPrefix + "_0";
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
  const std::shared_ptr<const OldFiles> old(
      new OldFiles{descriptorOf(mDirectory), std::move(files), now});
  Thread remover;
  if (startThread(remover, "orb-log-remove", ThreadWork::Library, [old] { old->remove(); })) {
    remover.detach();
  } else {
    old->remove();
  }
}
