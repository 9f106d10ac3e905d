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
  std::vector<std::string> files;  // each file once, whatever the number of ways to it
  std::vector<std::string> problems;
};

// The search for lost records may take so much of an empty file and so much more per byte: what it
// costs goes by what there is to read.
constexpr uint64_t kLeastBudget = uint64_t{4} << 20;
constexpr uint64_t kBudgetPerByte = 512;

// The log files that the arguments name: files themselves, and of directories every orb_log_* file
// in them and in their subdirectories, except the configuration, the trace and keys.
FileList findLogFiles(const std::vector<std::string>& arguments);

// One log file. It is held open as long as the pool allows: the library removes files and makes
// others of the same name, and what was in the removed one can still be read to its end. Used by
// one thread.
class LogSource {
 public:
  // Null on failure, with a sentence in `error` that names the file; none when the file is
  // gone by now. Without a finder its own header gives no key. The others must outlive it.
  static std::unique_ptr<LogSource> open(const std::string& path, FilePool& pool, KeyRing& ring,
                                         KeyFinder* finder, std::string& error);
  const std::string& path() const { return mFile.path(); }
  PooledFile& file() { return mFile; }
  // Its size now; the size that it had when it is lost, which fault() tells then.
  uint64_t look();
  uint64_t size() const { return static_cast<uint64_t>(mFile.status().st_size); }
  // When it was changed last, as far as is known, in nanoseconds.
  int64_t changed() const;

  // Puts the key of the header on the ring before anything is read, so that files read earlier can
  // be tried with it.
  void primeKey();
  // Where reading goes on, with what is known of what came before. A copy of it reads the same
  // again as long as the file stays as it is. It may search the more the larger the file is.
  LogParser& parser();
  // Reads the next piece with a parser, from the end of its last whole record on: what followed
  // that may have been taken back by its writer meanwhile. False when it came to `end`, which is
  // the file's present end or was once, and when that cannot be read.
  bool readSome(LogParser& parser, uint64_t end, Parsed& out);
  // The first bytes, so many at most.
  std::vector<uint8_t> start(size_t most);
  // Whether the header's key opens the first and the last record and the lengths lead from one to
  // the other, each such as the library writes, and to `end`: then nothing but records that were
  // altered can be wrong with it, and it has one session key. The two records come in `ends`. With
  // `mayLackEnd` the record behind the last may be a part of one.
  bool isInOrder(uint64_t end, bool mayLackEnd, std::vector<Record>& ends);
  // Why it could not be read; empty when it could.
  const std::string& fault() const { return mFault; }
  // False when its name belongs to another file by now, or records that were read are cut off.
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
  uint64_t mBudgeted = 0;  // bytes of the file that the parser has search budget for
  std::string mFault;
};

}  // namespace orblog
