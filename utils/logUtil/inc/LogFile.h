// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "UniqueFd.h"

// Appends to log files by name, with the result of opening, writing and closing for each piece, and
// at a fraction of the cost: the descriptor of the latest file is kept as long as that file is
// still the one under its name. Owned by the log and used under its mutex; never blocks on anything
// but a regular file's own disk. What cannot be written is dropped.
class LogFile {
 public:
  // Creates the file if it is missing. False when the bytes are not in the file.
  bool append(const std::string& path, const uint8_t* data, size_t size);
  // Forgets the descriptor; the next append opens its file anew.
  void close();

 private:
  bool openFile(const std::string& path);
  bool isStill(const std::string& path) const;

  std::string mPath;
  UniqueFd mFd;
  uint64_t mDevice = 0;
  uint64_t mInode = 0;
};
