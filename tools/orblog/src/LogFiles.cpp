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
// Larger than any record, so that every piece advances the parser.
constexpr size_t kPieceSize = size_t{128} << 10;
static_assert(kPieceSize > kLengthSize + kGreatestLength);
constexpr uint64_t kMostBudget = uint64_t{1} << 30;

bool startsWith(const std::string& text, const char* start) {
  return text.compare(0, std::strlen(start), start) == 0;
}

bool isLogName(const std::string& name) {
  const fs::path path(name);
  return startsWith(name, "orb_log_") && name != "orb_log_config" && name != "orb_log_trace" &&
         path.extension() != ".pem";
}

// Adds the log files of a directory, sorted by name; with `deeper` also those of its
// subdirectories.
void listDirectory(const fs::path& directory, bool deeper, FileList& list) {
  std::error_code error;
  std::vector<fs::path> files, directories;
  for (fs::directory_iterator it(directory, error), none; !error && it != none;
       it.increment(error)) {
    std::error_code ignored;  // the file may be gone already
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

LogSource::LogSource(const std::string& path, FilePool& pool, KeyRing& ring, KeyFinder* finder)
    : mFile(path, pool),
      mRing(ring),
      mFinder(finder),
      mParser(ring, [this](ByteView header) { return openHeader(header); }) {
  mParser.setSearchBudget(kLeastBudget);
}

std::unique_ptr<LogSource> LogSource::open(const std::string& path, FilePool& pool, KeyRing& ring,
                                           KeyFinder* finder, std::string& error) {
  std::unique_ptr<LogSource> source(new LogSource(path, pool, ring, finder));
  if (source->mFile.fd() < 0) {
    // A listed file may have been rotated away since.
    error = errno == ENOENT ? std::string() : path + ": " + std::strerror(errno);
    return nullptr;
  }
  if (!S_ISREG(source->mFile.status().st_mode)) {
    error = path + ": not a regular file; give - to read standard input";
    return nullptr;
  }
  return source;
}

uint64_t LogSource::look() {
  if (!mFile.look()) (void)fail(0, ESTALE);
  return size();
}

int64_t LogSource::changed() const {
  const struct stat& status = mFile.status();
  return int64_t{status.st_mtim.tv_sec} * 1000000000 + status.st_mtim.tv_nsec;
}

void LogSource::primeKey() {
  std::array<uint8_t, kHeaderSize> header = {};
  if (pread(mFile.fd(), header.data(), header.size(), 0) == static_cast<ssize_t>(header.size()))
    (void)openHeader({header.data(), header.size()});
}

LogParser& LogSource::parser() {
  if (size() > mBudgeted) {
    const uint64_t more = std::min(size() - mBudgeted, kMostBudget / kBudgetPerByte);
    mParser.addSearchBudget(more * kBudgetPerByte);
    mBudgeted = size();
  }
  return mParser;
}

bool LogSource::readSome(LogParser& parser, uint64_t end, Parsed& out) {
  uint64_t at = parser.restart();
  if (at >= end) return !parser.feed({}, out);
  const int fd = mFile.fd();
  if (fd < 0) return fail(at, errno);
  const off_t data = lseek(fd, static_cast<off_t>(at), SEEK_DATA);
  // After the last data, the hole extends to the end. If holes are not supported, everything is
  // data.
  const uint64_t filledFrom = data >= 0 ? static_cast<uint64_t>(data) : errno == ENXIO ? end : at;
  if (filledFrom > at && parser.passZeros(std::min(filledFrom, end))) at = parser.restart();

  std::array<uint8_t, kPieceSize> piece;
  const size_t wanted = static_cast<size_t>(std::min<uint64_t>(end - at, piece.size()));
  size_t filled = 0;
  ssize_t size = 1;
  while (filled < wanted && size > 0) {
    size = pread(fd, piece.data() + filled, wanted - filled, static_cast<off_t>(at + filled));
    if (size > 0) filled += static_cast<size_t>(size);
    if (size < 0 && errno == EINTR) size = 1;
  }
  if (size < 0) (void)fail(at + filled, errno);
  const bool more = filled == wanted && at + filled < end;
  return !parser.feed({piece.data(), filled}, out, more) || more;
}

std::vector<uint8_t> LogSource::start(size_t most) {
  std::vector<uint8_t> bytes(most);
  const ssize_t size = pread(mFile.fd(), bytes.data(), most, 0);
  bytes.resize(static_cast<size_t>(std::max<ssize_t>(size, 0)));
  return bytes;
}

bool LogSource::addRecord(size_t key, uint64_t at, std::vector<Record>& records) {
  std::array<uint8_t, kLengthSize + kLongestSeal> bytes;
  const ssize_t size = pread(mFile.fd(), bytes.data(), bytes.size(), static_cast<off_t>(at));
  if (size < static_cast<ssize_t>(kLengthSize)) return false;
  const size_t sealed = readLength(bytes.data());
  if (sealed > static_cast<size_t>(size) - kLengthSize) return false;
  records.push_back({at, {}});
  return mRing.opens(key, {bytes.data() + kLengthSize, sealed}, records.back().text);
}

bool LogSource::isInOrder(uint64_t end, bool mayLackEnd, std::vector<Record>& ends) {
  const std::vector<uint8_t> header = start(kHeaderSize);
  if (header.size() < kHeaderSize) return false;
  const std::optional<size_t> key = openHeader({header.data(), header.size()});
  if (!key) return false;
  std::vector<uint8_t> piece(kPieceSize);
  uint64_t at = kHeaderSize, last = 0, pieceStart = 0, pieceEnd = 0;
  while (at + kLengthSize <= end) {
    if (at + kLengthSize > pieceEnd) {
      const ssize_t size = pread(mFile.fd(), piece.data(), piece.size(), static_cast<off_t>(at));
      if (size < static_cast<ssize_t>(kLengthSize)) return false;
      pieceStart = at;
      pieceEnd = at + static_cast<uint64_t>(size);
    }
    const size_t sealed = readLength(piece.data() + (at - pieceStart));
    if (sealed < kSealSize || sealed > kLongestSeal) return false;
    if (at + kLengthSize + sealed > end) break;
    last = at;
    at += kLengthSize + sealed;
  }
  return (at == end || mayLackEnd) && last != 0 && addRecord(*key, kHeaderSize, ends) &&
         addRecord(*key, last, ends);
}

// Returns false, for the caller to return.
bool LogSource::fail(uint64_t offset, int error) {
  mFault = error == ENOENT || error == ESTALE
               ? "removed before it was read to its end; with more descriptors (ulimit -n) it "
                 "would have been kept open"
               : "offset " + std::to_string(offset) +
                     ": the file cannot be read: " + std::strerror(error);
  return false;
}

bool LogSource::isCurrent() {
  struct stat named = {};
  const struct stat& held = mFile.status();
  return stat(path().c_str(), &named) == 0 && named.st_dev == held.st_dev &&
         named.st_ino == held.st_ino && mParser.goBack(static_cast<uint64_t>(named.st_size));
}

}  // namespace orblog
