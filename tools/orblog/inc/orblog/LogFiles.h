// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "orblog/FilePool.h"
#include "orblog/LogParser.h"
#include "orblog/PrivateKey.h"

namespace orblog {

struct FileList {
  std::vector<std::string> files;  // each file once, even if several arguments name it
  std::vector<std::string> problems;
};

// The search for lost records may use a fixed budget plus a budget for each byte of the file.
constexpr uint64_t kLeastBudget = uint64_t{4} << 20;
constexpr uint64_t kBudgetPerByte = 512;

// The log files that the arguments name: files, and for directories every orb_log_* file in them
// and in their subdirectories, except the configuration, the trace and keys.
FileList findLogFiles(const std::vector<std::string>& arguments);

// One log file. It stays open as long as the pool allows. The library removes files and creates
// others with the same name; an open file can still be read to its end. Used by one thread.
class LogSource {
 public:
  // Null on failure, with a sentence in `error` that names the file; null without a sentence if the
  // file no longer exists. Without a finder its own header gives no key. The other objects must
  // live longer.
  static std::unique_ptr<LogSource> open(const std::string& path, FilePool& pool, KeyRing& ring,
                                         KeyFinder* finder, std::string& error);
  const std::string& path() const { return mFile.path(); }
  PooledFile& file() { return mFile; }
  // The current size, or the last known size if the file is lost; then fault() has the reason.
  uint64_t look();
  uint64_t size() const { return static_cast<uint64_t>(mFile.status().st_size); }
  // The time of the last change in nanoseconds, as far as known.
  int64_t changed() const;

  // Adds the key of the header to the ring before records are read, so that other files can be
  // tried with it.
  void primeKey();
  // The parser that continues this file. A copy of it reads the same records again as long as the
  // file does not change. A larger file has a larger search budget.
  LogParser& parser();
  // Reads the next piece with a parser, beginning after its last whole record, because the writer
  // may have replaced the bytes after that. False at `end`, which is the current or an earlier end
  // of the file, and if the file cannot be read.
  bool readSome(LogParser& parser, uint64_t end, Parsed& out);
  // At most this number of bytes from the start.
  std::vector<uint8_t> start(size_t most);
  // Whether the file is in order: the key of the header decrypts the first and the last record, and
  // the lengths lead from the first to the last record and to `end`, each with a length that the
  // library writes. Then only altered records can be wrong, and the file has one session key.
  // `ends` gets the two records. With `mayLackEnd` a part of a record may follow.
  bool isInOrder(uint64_t end, bool mayLackEnd, std::vector<Record>& ends);
  // The reason why the file could not be read; empty if it could.
  const std::string& fault() const { return mFault; }
  // False if another file has its name now, or if records that were read are cut off.
  bool isCurrent();

 private:
  std::optional<size_t> openHeader(ByteView header) const {
    return mFinder == nullptr ? std::nullopt : mFinder->open(header, path());
  }
  LogSource(const std::string& path, FilePool& pool, KeyRing& ring, KeyFinder* finder);
  bool fail(uint64_t offset, int error);
  bool addRecord(size_t key, uint64_t at, std::vector<Record>& records);
  PooledFile mFile;
  KeyRing& mRing;
  KeyFinder* const mFinder;
  LogParser mParser;
  uint64_t mBudgeted = 0;  // number of file bytes that the parser already got a search budget for
  std::string mFault;
};

}  // namespace orblog
