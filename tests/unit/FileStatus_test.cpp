// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "FileStatus.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/syscall.h>

#include <cerrno>
#include <cstdarg>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "SystemCall.h"
#include "UniqueFd.h"

namespace {

namespace fs = std::filesystem;

int refusal = 0;  // the error of the system call without times; 0 if it works

}  // namespace

extern "C" long callOrRefusal(long number, ...) __asm__("syscall");
long callOrRefusal(long number, ...) {
  if (number == SYS_statx && refusal != 0) {
    errno = refusal;
    return -1;
  }
  va_list arguments;
  va_start(arguments, number);
  const long result = nextSystemCall(number, arguments);
  va_end(arguments);
  return result;
}

namespace {

// The parameter is the error that the system call without times has.
class FileStatusTest : public testing::TestWithParam<int> {
 protected:
  FileStatusTest() {
    char name[] = "/tmp/file-status-XXXXXX";
    directory = mkdtemp(name);
    path = directory / "file";
    std::ofstream(path) << "seven b";
    refusal = GetParam();
  }
  ~FileStatusTest() override {
    refusal = 0;
    fs::remove_all(directory);
  }

  static FileStatus named(const fs::path& name) {
    FileStatus status;
    EXPECT_TRUE(status.readName(name.c_str()));
    return status;
  }

  fs::path directory, path;
};

TEST_P(FileStatusTest, IsWhatTheSystemSays) {
  struct stat wanted = {};
  ASSERT_EQ(0, stat(path.c_str(), &wanted));
  const FileStatus status = named(path);
  EXPECT_EQ(wanted.st_mode, status.mode);
  EXPECT_EQ(wanted.st_uid, status.owner);
  EXPECT_EQ(1u, status.links);
  EXPECT_EQ(wanted.st_ino, status.inode);
  EXPECT_EQ(7, status.size);
  EXPECT_TRUE(status.isPlain());
}

TEST_P(FileStatusTest, OpenFileIsTheFileWithItsName) {
  const UniqueFd file(open(path.c_str(), O_RDONLY | O_CLOEXEC));
  FileStatus status;
  ASSERT_TRUE(status.readOpenFile(file.get()));
  EXPECT_TRUE(status.isSameFile(named(path)));
  EXPECT_EQ(7, status.size);
  EXPECT_TRUE(status.isPlain());
  std::ofstream(directory / "other") << "seven b";
  EXPECT_FALSE(status.isSameFile(named(directory / "other")));
}

TEST_P(FileStatusTest, FilesOfTwoFileSystemsAreNotTheSame) {
  FileStatus other = named(path);
  ++other.device;
  EXPECT_FALSE(other.isSameFile(named(path)));
}

TEST_P(FileStatusTest, LinkIsNotFollowed) {
  fs::create_symlink(path, directory / "link");
  EXPECT_FALSE(named(directory / "link").isPlain());
  EXPECT_FALSE(named(directory / "link").isSameFile(named(path)));
}

TEST_P(FileStatusTest, SecondNameOrFolderIsNotPlain) {
  EXPECT_FALSE(named(directory).isPlain());
  fs::create_hard_link(path, directory / "second");
  EXPECT_EQ(2u, named(path).links);
  EXPECT_FALSE(named(path).isPlain());
}

TEST_P(FileStatusTest, MissingFileHasNoStatus) {
  FileStatus status;
  errno = 0;
  EXPECT_FALSE(status.readName((directory / "none").c_str()));
  EXPECT_EQ(ENOENT, errno);
  EXPECT_FALSE(status.readOpenFile(-1));
  EXPECT_EQ(EBADF, errno);
}

INSTANTIATE_TEST_SUITE_P(Kernels, FileStatusTest, testing::Values(0, ENOSYS, EPERM));

TEST(FileStatusErrorTest, OtherErrorsAreReported) {
  refusal = EACCES;
  FileStatus status;
  EXPECT_FALSE(status.readName("/"));
  EXPECT_EQ(EACCES, errno);
  EXPECT_FALSE(status.readOpenFile(0));
  EXPECT_EQ(EACCES, errno);
  refusal = 0;
}

}  // namespace
