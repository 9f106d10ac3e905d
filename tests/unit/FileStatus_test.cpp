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
#include <stdexcept>

#include "SystemCall.h"
#include "UniqueFd.h"

namespace {

namespace fs = std::filesystem;

int refusal = 0;      // the error of the system call without times; 0 if it works
int asked = 0;        // how often it was called
unsigned wanted = 0;  // and what for
constexpr unsigned kInode = 0x100;
constexpr unsigned kTimes = 0x20 | 0x40 | 0x80 | 0x800;  // read, written, changed, made

void note(va_list arguments) {
  va_list values;
  va_copy(values, arguments);
  (void)va_arg(values, int);
  (void)va_arg(values, const char*);
  (void)va_arg(values, int);
  ++asked;
  wanted |= va_arg(values, unsigned);
  va_end(values);
}

}  // namespace

extern "C" long callOrRefusal(long number, ...) __asm__("syscall");
long callOrRefusal(long number, ...) {
  va_list arguments;
  va_start(arguments, number);
  if (number == SYS_statx) note(arguments);
  const bool refused = number == SYS_statx && refusal != 0;
  const long result = refused ? -1 : nextSystemCall(number, arguments);
  if (refused) errno = refusal;
  va_end(arguments);
  return result;
}

namespace {

// The parameter is the error that the system call without times has.
class FileStatusTest : public testing::TestWithParam<int> {
 protected:
  FileStatusTest() {
    char name[] = "/tmp/file-status-XXXXXX";
    if (mkdtemp(name) == nullptr) throw std::runtime_error("no temporary folder");
    directory = name;
    path = directory / "file";
    std::ofstream(path) << "seven b";
    refusal = GetParam();
    asked = 0;
    wanted = 0;
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
  struct stat truth = {};
  ASSERT_EQ(0, stat(path.c_str(), &truth));
  FileStatus status;
  status.owner = truth.st_uid + 1;
  ASSERT_TRUE(status.readName(path.c_str()));
  EXPECT_EQ(truth.st_mode, status.mode);
  EXPECT_EQ(truth.st_uid, status.owner);
  EXPECT_EQ(1u, status.links);
  EXPECT_EQ(truth.st_dev, status.device);
  EXPECT_EQ(truth.st_ino, status.inode);
  EXPECT_EQ(7, status.size);
  EXPECT_TRUE(status.isPlain());
}

TEST_P(FileStatusTest, TimesAreNotAskedForWhereThatIsPossible) {
  named(path);
  EXPECT_EQ(1, asked);
  EXPECT_NE(0u, wanted & kInode);
  EXPECT_EQ(0u, wanted & kTimes);
}

TEST_P(FileStatusTest, OpenFileIsTheFileWithItsName) {
  const UniqueFd file(open(path.c_str(), O_RDONLY | O_CLOEXEC));
  FileStatus status;
  ASSERT_TRUE(status.readOpenFile(file.get()));
  EXPECT_EQ(named(path).device, status.device);
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

// A filter of system calls may come into force at any time, and may answer with any error.
TEST_P(FileStatusTest, FileIsTheSameHoweverItsStatusWasRead) {
  const FileStatus before = named(path);
  refusal = refusal == 0 ? EPERM : 0;
  EXPECT_TRUE(before.isSameFile(named(path)));
}

INSTANTIATE_TEST_SUITE_P(Kernels, FileStatusTest,
                         testing::Values(0, ENOSYS, EPERM, EACCES, EINVAL));

}  // namespace
