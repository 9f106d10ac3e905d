// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "orblog/FilePool.h"

#include <fcntl.h>
#include <sys/resource.h>

#include <algorithm>
#include <cerrno>
#include <utility>

namespace orblog {
namespace {

// The standard streams, the descriptor that waits for changes, a listed directory, and a reserve.
constexpr size_t kForOthers = 10;

size_t mostOpenFiles() {
  rlimit limit = {};
  if (getrlimit(RLIMIT_NOFILE, &limit) != 0) return 1;
  const size_t all = static_cast<size_t>(std::min<rlim_t>(limit.rlim_cur, 65536));
  return all > kForOthers ? all - kForOthers : 1;
}

}  // namespace

PooledFile::PooledFile(std::string path, FilePool& pool) : mPath(std::move(path)), mPool(pool) {}

PooledFile::~PooledFile() { mPool.forget(*this); }

int PooledFile::fd() {
  if (mFd.get() < 0 && !open()) return -1;
  mPool.use(*this);
  return mFd.get();
}

bool PooledFile::open() {
  mPool.makeRoom();
  int fd = -1;
  // O_NONBLOCK: a FIFO of that name must not block. The limit of descriptors can be lower than it
  // says, because the program may have inherited open ones.
  do {
    fd = ::open(mPath.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
  } while (fd < 0 && (errno == EMFILE || errno == ENFILE) && mPool.closeOldest());
  if (fd < 0) return false;
  mFd.reset(fd);
  struct stat status = {};
  if (fstat(fd, &status) == 0 && note(status)) return true;
  mFd.reset();
  errno = ESTALE;
  return false;
}

// False if it is another file.
bool PooledFile::note(const struct stat& status) {
  if (mIsKnown && (status.st_dev != mStatus.st_dev || status.st_ino != mStatus.st_ino))
    return false;
  mStatus = status;
  return mIsKnown = true;
}

bool PooledFile::look() {
  struct stat status = {};
  return (mFd.get() >= 0 ? fstat(mFd.get(), &status) : stat(mPath.c_str(), &status)) == 0 &&
         note(status);
}

FilePool::FilePool() : mMost(mostOpenFiles()) {}

void FilePool::makeRoom() {
  while (mOpen.size() >= mMost && closeOldest()) {
  }
}

void FilePool::use(PooledFile& file) {
  const auto place = std::find(mOpen.rbegin(), mOpen.rend(), &file);
  if (place == mOpen.rend()) {
    mOpen.push_back(&file);
  } else {
    std::rotate(place.base() - 1, place.base(), mOpen.end());
  }
}

void FilePool::forget(PooledFile& file) {
  mOpen.erase(std::remove(mOpen.begin(), mOpen.end(), &file), mOpen.end());
}

bool FilePool::closeOldest() {
  if (mOpen.empty()) return false;
  mOpen.front()->mFd.reset();
  mOpen.erase(mOpen.begin());
  return true;
}

}  // namespace orblog
