// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <sys/stat.h>

#include <cstddef>
#include <string>
#include <vector>

#include "UniqueFd.h"

namespace orblog {

class FilePool;

// One file of a pool, open for reading. The pool can close its descriptor to open another file; the
// next use opens it again. Used by one thread; the pool must live longer.
class PooledFile {
 public:
  PooledFile(std::string path, FilePool& pool);
  PooledFile(const PooledFile&) = delete;
  PooledFile& operator=(const PooledFile&) = delete;
  ~PooledFile();

  const std::string& path() const { return mPath; }
  // Valid until another file of the pool is used. -1 with errno; ESTALE if another file got the
  // name while this file was closed.
  int fd();
  // Updates the status. False if the file is closed and another file has its name.
  bool look();
  // The status at the last update or open.
  const struct stat& status() const { return mStatus; }

 private:
  friend class FilePool;
  bool open();
  bool note(const struct stat& status);
  const std::string mPath;
  FilePool& mPool;
  UniqueFd mFd;
  struct stat mStatus = {};
  bool mIsKnown = false;  // set by the first use
};

// Keeps as many files open as the process may have descriptors, minus a reserve. If there are more
// files, the files that were used last stay open. An open file can be read to its end even if it is
// renamed or removed. Used by one thread.
class FilePool {
 public:
  FilePool();
  size_t most() const { return mMost; }
  // If the limit of open files is reached, closes one, so that another descriptor can be opened.
  void makeRoom();

 private:
  friend class PooledFile;
  void use(PooledFile& file);
  void forget(PooledFile& file);
  bool closeOldest();
  const size_t mMost;
  std::vector<PooledFile*> mOpen;  // the last used file is last
};

}  // namespace orblog
