// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
//
// Apart from FileStatus.cpp: some C libraries declare the kernel's structure in <sys/stat.h> as
// well, others do not have it.
#include <linux/stat.h>
#include <sys/syscall.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include "FileStatus.h"

static_assert(sizeof(off_t) == sizeof(uint64_t), "the size of any file");

bool FileStatus::readWithoutTimes(int directory, const char* path, int flags) {
  constexpr unsigned kWanted =
      STATX_TYPE | STATX_MODE | STATX_UID | STATX_NLINK | STATX_INO | STATX_SIZE;
  struct statx status;
  if (syscall(SYS_statx, directory, path, flags, kWanted, &status) != 0) return false;
  mode = status.stx_mode;
  owner = status.stx_uid;
  links = status.stx_nlink;
  device = makedev(status.stx_dev_major, status.stx_dev_minor);
  inode = status.stx_ino;
  size = static_cast<off_t>(status.stx_size);
  return true;
}
