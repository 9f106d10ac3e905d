// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "LogFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

namespace {

ssize_t writeOnce(int fd, const uint8_t* data, size_t size) {
  ssize_t written = 0;
  do {
    written = write(fd, data, size);
  } while (written < 0 && errno == EINTR);
  return written;
}

}  // namespace

bool LogFile::append(const std::string& path, const uint8_t* data, size_t size) {
  if (!isStill(path) && !openFile(path)) return false;
  const ssize_t written = writeOnce(mFd.get(), data, size);
  if (written == static_cast<ssize_t>(size)) return true;
  if (written > 0) {
    // The disk is full. What follows half a piece could not be read any more: take it back.
    const off_t end = lseek(mFd.get(), 0, SEEK_CUR);
    if (end < written || ftruncate(mFd.get(), end - written) != 0) close();
  }
  return false;
}

void LogFile::close() {
  mFd.reset();
  mPath.clear();
}

bool LogFile::openFile(const std::string& path) {
  close();
  // Without waiting: what stands under the name may be a pipe.
  UniqueFd fd(open(path.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC | O_NONBLOCK, 0666));
  struct stat status = {};
  if (fd.get() < 0 || fstat(fd.get(), &status) != 0 || !S_ISREG(status.st_mode)) return false;
  mFd.reset(fd.release());
  mPath = path;
  mDevice = status.st_dev;
  mInode = status.st_ino;
  return true;
}

// The file may have been removed or renamed, and another one may have its name by now.
bool LogFile::isStill(const std::string& path) const {
  if (mFd.get() < 0 || path != mPath) return false;
  struct stat status = {};
  return stat(path.c_str(), &status) == 0 && status.st_ino == mInode && status.st_dev == mDevice;
}
