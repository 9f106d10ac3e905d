// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <sys/types.h>

#include <cstdint>

// Which file something is, and how large, without its times. To ask for the times is not free: on
// recent kernels the next write must then store new ones, which costs more than the question. A
// plain value.
struct FileStatus {
  mode_t mode = 0;
  uid_t owner = 0;
  uint64_t links = 0;
  dev_t device = 0;
  uint64_t inode = 0;
  off_t size = 0;

  // False with errno if there is no status. A link is not followed.
  bool readOpenFile(int fd);
  bool readName(const char* path);

  // A regular file without a second name. With one, it may be another user's.
  bool isPlain() const;
  bool isSameFile(const FileStatus& other) const {
    return inode == other.inode && device == other.device;
  }

 private:
  // By the system call that can leave the times out. Kernels before 4.11 do not have it, and a
  // filter of system calls may refuse it.
  bool readWithoutTimes(int directory, const char* path, int flags);
};
