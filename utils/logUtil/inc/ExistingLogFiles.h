// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <cstdint>
#include <ctime>
#include <map>
#include <string>

// The encrypted logs that earlier processes left behind: which of them go, and with which index
// this process begins. A value for the start of the encrypted log; no lock. Very many old files are
// removed by a thread of their own, which owns all that it touches.
class ExistingLogFiles {
 public:
  using ByAge = std::map<int64_t, std::string>;  // seconds to path, youngest first

  // Those in @p folder whose names have @p fileTag, of a log that goes round in @p maxFiles files.
  ExistingLogFiles(std::string folder, const std::string& fileTag, int maxFiles);

  // Looks through the folder. Both give the index to begin with.
  int checkExistingFiles() const;
  int reviewExistingFiles(ByAge files, time_t now) const;

 private:
  void removeOldFiles(ByAge files, time_t now) const;

  const std::string mFolder;
  const std::string mPrefix;  // of the names
  const int mMaxFiles;
};
