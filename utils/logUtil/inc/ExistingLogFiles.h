// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <cstdint>
#include <ctime>
#include <map>
#include <string>

// The encrypted logs that earlier processes have left: removes the old ones, and says with which
// index this process begins. Used while the encrypted log starts, on that thread; no lock. If there
// are very many old files, the thread "orb-log-remove" removes them, which owns all that it uses.
class ExistingLogFiles {
 public:
  using ByAge = std::map<int64_t, std::string>;  // seconds to path, youngest first

  // The files in @p directory whose names contain @p fileTag, of a log that has @p maxFiles files.
  ExistingLogFiles(std::string directory, const std::string& fileTag, int maxFiles);

  // Both return the index to begin with. The first one reads the directory.
  int checkExistingFiles() const;
  int reviewExistingFiles(ByAge files, time_t now) const;

 private:
  void removeOldFiles(ByAge files, time_t now) const;

  const std::string mDirectory;
  const std::string mPrefix;  // of the names
  const int mMaxFiles;
};
