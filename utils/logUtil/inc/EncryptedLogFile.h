// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <sys/types.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "FileStatus.h"
#include "UniqueFd.h"

// One file of the encrypted log. Appending a piece has the same result as opening the file by its
// name, writing and closing it, but costs much less: the descriptor is kept as long as its file
// still has the name. Owned by the encrypted log and used under the log's mutex. It blocks only
// while the disk writes. A piece that cannot be written is dropped.
//
// A piece can be read only if the header precedes it. If the file was removed, emptied or
// shortened, or if the disk had no room for the header, the header is written again before the next
// piece.
//
// Other users may have the right to write to the directory. So a new file is made only under a name
// that nothing has, and an existing file is used only if it is a regular file of this user without
// a second name. Links are not followed.
class EncryptedLogFile {
 public:
  EncryptedLogFile() = default;  // no file; nothing can be appended to it
  EncryptedLogFile(std::string path, std::vector<uint8_t> header);

  const std::string& path() const { return mPath; }
  // Makes an empty file if nothing has the name.
  void create();
  // Removes what has the name, makes a new file and writes the header. False if that failed.
  bool start();
  // Appends a piece; makes the file if it is missing. False if the piece is not in the file.
  bool append(const uint8_t* data, size_t size);
  // Closes the descriptor; the next piece opens the file again.
  void close();

 private:
  class SizeSignal;

  bool take(int flags, bool made);
  bool openFile();
  bool isStill();
  bool isUnderTheName(const FileStatus& file, FileStatus& named) const;
  bool needsHeader() const;
  bool putHeader(SizeSignal& signal);
  bool put(SizeSignal& signal, const uint8_t* data, size_t size);
  bool cutAt(off_t end);

  std::string mPath;
  std::vector<uint8_t> mHeader;
  UniqueFd mFd;
  bool mMade = false;   // this object has made the file, so it may empty it
  bool mBegun = false;  // the header of this run is in the file
  off_t mRemains = -1;  // begin of an incomplete piece that could not be cut off, or -1
  off_t mSize = 0;      // size of the file when it was last checked or written to
  off_t mEnd = 0;       // end of the latest piece, as far as this object knows
  off_t mLatest = 0;    // size of the latest piece
  FileStatus mFile;     // which file it is that was opened last; its size is in mSize
};
