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

// One file of a pool, open for reading. Its descriptor may be closed for the sake of another file;
// the next use opens it anew. Used by one thread; the pool must outlive it.
class PooledFile {
 public:
  PooledFile(std::string path, FilePool& pool);
  PooledFile(const PooledFile&) = delete;
  PooledFile& operator=(const PooledFile&) = delete;
  ~PooledFile();

  const std::string& path() const { return mPath; }
  // Good until another file of the pool is used. -1 with errno; ESTALE when the name has gone to
  // another file while this one was closed.
  int fd();
  // Looks at it, as it is now. False when it is closed and has lost its name.
  bool look();
  // As it was when it was looked at or opened last.
  const struct stat& status() const { return mStatus; }

 private:
  friend class FilePool;
  bool open();
  bool note(const struct stat& status);
  const std::string mPath;
  FilePool& mPool;
  UniqueFd mFd;
  struct stat mStatus = {};
  bool mIsKnown = false;  // after the first use
};

// Keeps as many files open as the process may have descriptors, less some for other purposes; of
// more files those that were used last. A file that is open can be read to its end whatever becomes
// of its name. Used by one thread.
class FilePool {
 public:
  FilePool();
  size_t most() const { return mMost; }
  // Closes a file if as many are open as may be, so that something else can be opened.
  void makeRoom();

 private:
  friend class PooledFile;
  void use(PooledFile& file);
  void forget(PooledFile& file);
  bool closeOldest();
  const size_t mMost;
  std::vector<PooledFile*> mOpen;  // the one that was used last comes last
};

}  // namespace orblog
