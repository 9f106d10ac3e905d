// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <sys/stat.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "UniqueFd.h"
#include "orblog/LogParser.h"
#include "orblog/PrivateKey.h"

namespace orblog {

struct FileList {
  std::vector<std::string> files;  // each file once, whatever the number of ways to it
  std::vector<std::string> problems;
};

// The log files that the arguments name: files themselves, and of directories every orb_log_* file
// in them and in their subdirectories, except the configuration, the trace and keys.
FileList findLogFiles(const std::vector<std::string>& arguments);

// One log file, held open: the library removes files and makes others of the same name, and what
// was in the removed one can still be read to its end. Used by one thread.
class LogSource {
 public:
  // Null on failure, with a sentence in `error` that names the file; none when the file is
  // gone by now. Without a finder its own header gives no key. Ring and finder must outlive it.
  static std::unique_ptr<LogSource> open(const std::string& path, KeyRing& ring, KeyFinder* finder,
                                         std::string& error);
  const std::string& path() const { return mPath; }
  int fd() const { return mFd.get(); }
  // The file as it is now.
  struct stat status() const;

  // Puts the key of the header on the ring before anything is read, so that files read earlier can
  // be tried with it.
  void primeKey();
  // Reads the next piece, from the end of the last whole record on: what followed that may have
  // been taken back by its writer meanwhile. False when it came to the file's present end, and when
  // that cannot be read.
  bool readSome(Parsed& out);
  void finish(Parsed& out) { mParser.finish(out); }
  uint64_t position() const { return mPosition; }
  bool failed() const { return mFailed; }
  // False when its name belongs to another file by now, or records that were read are cut off.
  bool isCurrent();

 private:
  std::optional<size_t> openHeader(ByteView header) const {
    return mFinder == nullptr ? std::nullopt : mFinder->open(header, mPath);
  }
  LogSource(std::string path, int fd, KeyRing& ring, KeyFinder* finder);
  const std::string mPath;
  const UniqueFd mFd;
  KeyFinder* const mFinder;
  LogParser mParser;
  uint64_t mPosition = 0;
  bool mFailed = false;
};

}  // namespace orblog
