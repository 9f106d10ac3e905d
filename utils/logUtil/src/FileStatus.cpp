// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "FileStatus.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>

namespace {

FileStatus statusOf(const struct stat& status) {
  FileStatus result;
  result.mode = status.st_mode;
  result.owner = status.st_uid;
  result.links = status.st_nlink;
  result.device = status.st_dev;
  result.inode = status.st_ino;
  result.size = status.st_size;
  return result;
}

// EPERM: from a filter of system calls that does not know this one.
bool isMissing(int error) { return error == ENOSYS || error == EPERM; }

}  // namespace

bool FileStatus::readOpenFile(int fd) {
  if (readWithoutTimes(fd, "", AT_EMPTY_PATH)) return true;
  struct stat status;
  if (!isMissing(errno) || fstat(fd, &status) != 0) return false;
  *this = statusOf(status);
  return true;
}

bool FileStatus::readName(const char* path) {
  if (readWithoutTimes(AT_FDCWD, path, AT_SYMLINK_NOFOLLOW)) return true;
  struct stat status;
  if (!isMissing(errno) || lstat(path, &status) != 0) return false;
  *this = statusOf(status);
  return true;
}

bool FileStatus::isPlain() const { return S_ISREG(mode) && links == 1; }
