// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <sys/stat.h>
#include <sys/types.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "UniqueFd.h"

// One file of the encrypted log, found by its name for each piece that is appended, with the result
// of opening, writing and closing it each time, and at a fraction of the cost: the descriptor is
// kept as long as its file is still the one under the name. Owned by the log and used under its
// mutex; never blocks on anything but a regular file's own disk. What cannot be written is dropped.
//
// A piece is only readable with the header before it: whoever removes, empties or shortens the file
// gets a new header before the next piece, and so does a disk that had no room for the first one.
//
// Others may be able to write to the folder. So a new file is made where nothing has the name, and
// what has the name already is written to only if it is a regular file of this user without a
// second name; links are not followed.
class EncryptedLogFile {
 public:
  EncryptedLogFile() = default;  // no file; nothing can be appended to it
  EncryptedLogFile(std::string path, std::vector<uint8_t> header);

  const std::string& path() const { return mPath; }
  // Makes an empty file if there is none.
  void create();
  // Removes what bears the name and begins a new file with the header.
  bool start();
  // Makes the file if it is missing. False when the bytes are not in it.
  bool append(const uint8_t* data, size_t size);
  // Gives the descriptor back; the next piece opens the file anew.
  void close();

 private:
  class SizeSignal;

  bool take(int flags, bool made);
  bool openFile();
  bool isStill();
  bool isUnderTheName(struct stat& status) const;
  bool needsHeader() const;
  bool putHeader(SizeSignal& signal);
  bool put(SizeSignal& signal, const uint8_t* data, size_t size);
  bool cutAt(off_t end);

  std::string mPath;
  std::vector<uint8_t> mHeader;
  UniqueFd mFd;
  bool mMade = false;   // by this object, so that it may be emptied
  bool mBegun = false;  // this run's header has been written to it
  off_t mRemains = -1;  // where half a piece begins that could not be taken back
  off_t mSize = 0;      // when it was last looked at or written to
  off_t mEnd = 0;       // of the latest piece, as far as this object knows
  off_t mLatest = 0;    // its size
  dev_t mDevice = 0;
  ino_t mInode = 0;
};
