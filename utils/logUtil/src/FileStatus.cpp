// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "FileStatus.h"

#include <fcntl.h>
#include <sys/stat.h>

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

}  // namespace

bool FileStatus::readOpenFile(int fd) {
  if (readWithoutTimes(fd, "", AT_EMPTY_PATH)) return true;
  struct stat status;
  if (fstat(fd, &status) != 0) return false;
  *this = statusOf(status);
  return true;
}

bool FileStatus::readName(const char* path) {
  if (readWithoutTimes(AT_FDCWD, path, AT_SYMLINK_NOFOLLOW | AT_NO_AUTOMOUNT)) return true;
  struct stat status;
  if (lstat(path, &status) != 0) return false;
  *this = statusOf(status);
  return true;
}

bool FileStatus::isPlain() const { return S_ISREG(mode) && links == 1; }
