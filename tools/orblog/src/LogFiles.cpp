// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "orblog/LogFiles.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <set>
#include <system_error>

#include "orblog/Format.h"

namespace orblog {
namespace {

namespace fs = std::filesystem;
// Larger than any record, so that every piece takes the reading on.
constexpr size_t kPieceSize = size_t{128} << 10;
static_assert(kPieceSize > kLengthSize + kGreatestLength);

bool startsWith(const std::string& text, const char* start) {
  return text.compare(0, std::strlen(start), start) == 0;
}

bool isLogName(const std::string& name) {
  const fs::path path(name);
  return startsWith(name, "orb_log_") && name != "orb_log_config" && name != "orb_log_trace" &&
         path.extension() != ".pem";
}

// Adds the log files of a directory, sorted by name, and with `deeper` those of its subdirectories.
void listDirectory(const fs::path& directory, bool deeper, FileList& list) {
  std::error_code error;
  std::vector<fs::path> files, directories;
  for (fs::directory_iterator it(directory, error), none; !error && it != none;
       it.increment(error)) {
    std::error_code ignored;  // it may be gone already
    if (it->is_directory(ignored)) {
      directories.push_back(it->path());
    } else if (it->is_regular_file(ignored) && isLogName(it->path().filename().string())) {
      files.push_back(it->path());
    }
  }
  if (error) list.problems.push_back(directory.string() + ": " + error.message());
  std::sort(files.begin(), files.end());
  for (const fs::path& file : files) list.files.push_back(file.string());
  if (!deeper) return;
  std::sort(directories.begin(), directories.end());
  for (const fs::path& subdirectory : directories) listDirectory(subdirectory, false, list);
}

void dropRepeated(std::vector<std::string>& files) {
  std::set<std::pair<dev_t, ino_t>> seen;
  const auto repeated = [&seen](const std::string& file) {
    struct stat status = {};
    return stat(file.c_str(), &status) == 0 && !seen.insert({status.st_dev, status.st_ino}).second;
  };
  files.erase(std::remove_if(files.begin(), files.end(), repeated), files.end());
}

}  // namespace

FileList findLogFiles(const std::vector<std::string>& arguments) {
  FileList list;
  for (const std::string& argument : arguments) {
    std::error_code error;
    const fs::file_status status = fs::status(argument, error);
    if (!fs::exists(status)) {
      list.problems.push_back(argument + ": " + error.message());
    } else if (!fs::is_directory(status)) {
      list.files.push_back(argument);
    } else {
      const size_t former = list.files.size() + list.problems.size();
      listDirectory(argument, true, list);
      if (list.files.size() + list.problems.size() == former)
        list.problems.push_back(argument + ": no log files in this directory");
    }
  }
  dropRepeated(list.files);
  return list;
}

LogSource::LogSource(std::string path, int fd, KeyRing& ring, KeyFinder* finder)
    : mPath(std::move(path)),
      mFd(fd),
      mFinder(finder),
      mParser(ring, [this](ByteView header) { return openHeader(header); }) {}

std::unique_ptr<LogSource> LogSource::open(const std::string& path, KeyRing& ring,
                                           KeyFinder* finder, std::string& error) {
  // A pipe of that name must not make the reader wait.
  const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
  if (fd < 0) {
    // What was listed a moment ago may have been rotated away since.
    error = errno == ENOENT ? std::string() : path + ": " + std::strerror(errno);
    return nullptr;
  }
  std::unique_ptr<LogSource> source(new LogSource(path, fd, ring, finder));
  if (!S_ISREG(source->status().st_mode)) {
    error = path + ": not a regular file";
    return nullptr;
  }
  return source;
}

struct stat LogSource::status() const {
  struct stat status = {};
  if (fstat(mFd.get(), &status) != 0) status = {};
  return status;
}

void LogSource::primeKey() {
  std::array<uint8_t, kHeaderSize> header = {};
  if (pread(mFd.get(), header.data(), header.size(), 0) == static_cast<ssize_t>(header.size()))
    (void)openHeader({header.data(), header.size()});
}

bool LogSource::readSome(Parsed& out) {
  if (mFailed) return false;
  mPosition = mParser.restart();
  std::array<uint8_t, kPieceSize> piece;
  size_t filled = 0;
  ssize_t size = 1;
  while (filled < piece.size() && size > 0) {
    size = pread(mFd.get(), piece.data() + filled, piece.size() - filled,
                 static_cast<off_t>(mPosition + filled));
    if (size > 0) filled += static_cast<size_t>(size);
    if (size < 0 && errno == EINTR) size = 1;
  }
  mFailed = size < 0;
  mPosition += filled;
  const bool more = filled == piece.size();
  mParser.feed({piece.data(), filled}, out, more);
  return more;
}

bool LogSource::isCurrent() {
  struct stat named = {};
  const struct stat held = status();
  return stat(mPath.c_str(), &named) == 0 && named.st_dev == held.st_dev &&
         named.st_ino == held.st_ino && mParser.goBack(static_cast<uint64_t>(held.st_size));
}

}  // namespace orblog
