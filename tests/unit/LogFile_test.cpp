// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
//
// This program's write() and ftruncate() come before the C library's and fail as a test wants it.
#include "LogFile.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <deque>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "Descriptors.h"

namespace {

// What the next calls do: an error, or no more than so many bytes.
struct Outcome {
  int error;
  size_t most;
};
std::deque<Outcome> outcomes;
size_t writes = 0;
bool truncateFails = false;

}  // namespace

extern "C" ssize_t write(int fd, const void* data, size_t size) {
  ++writes;
  if (!outcomes.empty()) {
    const Outcome outcome = outcomes.front();
    outcomes.pop_front();
    if (outcome.error != 0) {
      errno = outcome.error;
      return -1;
    }
    size = std::min(size, outcome.most);
  }
  return syscall(SYS_write, fd, data, size);
}

extern "C" int ftruncate(int fd, off_t size) {
  if (!truncateFails) return static_cast<int>(syscall(SYS_ftruncate, fd, size));
  errno = EIO;
  return -1;
}

namespace {

namespace fs = std::filesystem;

class LogFileTest : public testing::Test {
 protected:
  LogFileTest() {
    char name[] = "/tmp/logfile-XXXXXX";
    directory = mkdtemp(name);
    path = directory / "log";
    outcomes.clear();
    truncateFails = false;
  }
  ~LogFileTest() override {
    file.close();
    fs::remove_all(directory);
  }

  bool append(const std::string& text) { return append(path, text); }
  bool append(const fs::path& name, const std::string& text) {
    return file.append(name, reinterpret_cast<const uint8_t*>(text.data()), text.size());
  }
  std::string content() const { return content(path); }
  static std::string content(const fs::path& name) {
    std::ifstream stream(name, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(stream), {});
  }

  fs::path directory, path;
  LogFile file;
};

TEST_F(LogFileTest, AppendsToANewAndToAnOldFile) {
  EXPECT_TRUE(append("one"));
  EXPECT_TRUE(append("two"));
  EXPECT_EQ("onetwo", content());
  LogFile second;
  const uint8_t byte = '3';
  EXPECT_TRUE(second.append(path, &byte, 1));
  EXPECT_TRUE(append("four"));
  EXPECT_EQ("onetwo3four", content());
}

TEST_F(LogFileTest, NothingToAppendCreatesTheFile) {
  EXPECT_TRUE(file.append(path, nullptr, 0));
  EXPECT_TRUE(fs::exists(path));
  EXPECT_EQ("", content());
}

TEST_F(LogFileTest, NewFileIsSubjectToTheMask) {
  const mode_t former = umask(022);
  append("text");
  struct stat status = {};
  ASSERT_EQ(0, stat(path.c_str(), &status));
  EXPECT_EQ(0644u, status.st_mode & 07777u);
  umask(002);
  append(directory / "other", "text");
  ASSERT_EQ(0, stat((directory / "other").c_str(), &status));
  EXPECT_EQ(0664u, status.st_mode & 07777u);
  umask(former);
}

TEST_F(LogFileTest, PiecesGoToTheFileThatTheyName) {
  const fs::path other = directory / "other";
  for (int i = 0; i < 3; ++i) {
    EXPECT_TRUE(append("a"));
    EXPECT_TRUE(append(other, "b"));
  }
  EXPECT_EQ("aaa", content());
  EXPECT_EQ("bbb", content(other));
}

TEST_F(LogFileTest, RemovedFileIsCreatedAgain) {
  append("one");
  fs::remove(path);
  EXPECT_TRUE(append("two"));
  EXPECT_EQ("two", content());
}

TEST_F(LogFileTest, RenamedFileKeepsWhatItHasAndANewOneIsBegun) {
  append("one");
  fs::rename(path, directory / "moved");
  EXPECT_TRUE(append("two"));
  EXPECT_EQ("two", content());
  EXPECT_EQ("one", content(directory / "moved"));
}

TEST_F(LogFileTest, FileThatTookTheNameIsUsed) {
  append("one");
  std::ofstream(directory / "new") << "new";
  fs::rename(directory / "new", path);
  EXPECT_TRUE(append("two"));
  EXPECT_EQ("newtwo", content());
}

TEST_F(LogFileTest, ShortenedFileIsContinuedAtItsEnd) {
  append("onetwo");
  fs::resize_file(path, 3);
  EXPECT_TRUE(append("four"));
  EXPECT_EQ("onefour", content());
}

TEST_F(LogFileTest, MissingDirectoryIsFoundOnceItIsThere) {
  const fs::path deep = directory / "sub" / "log";
  EXPECT_FALSE(append(deep, "one"));
  fs::create_directory(directory / "sub");
  EXPECT_TRUE(append(deep, "two"));
  EXPECT_EQ("two", content(deep));
}

TEST_F(LogFileTest, FileInTheDirectorysPlaceIsRefused) {
  std::ofstream(directory / "sub") << "text";
  EXPECT_FALSE(append(directory / "sub" / "log", "one"));
  EXPECT_EQ("text", content(directory / "sub"));
}

TEST_F(LogFileTest, OnlyRegularFilesAreWritten) {
  EXPECT_FALSE(append(directory, "one"));

  ASSERT_EQ(0, mkfifo(path.c_str(), 0666));
  EXPECT_FALSE(append("one"));  // a pipe that nobody reads: no waiting for a reader
  const int reader = open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
  EXPECT_FALSE(append("one"));
  char byte = 0;
  EXPECT_EQ(0, read(reader, &byte, 1));  // nor is anything written to one that is read
  close(reader);

  fs::remove(path);
  fs::create_symlink("/dev/full", path);
  EXPECT_FALSE(append("one"));
  fs::remove(path);
  EXPECT_TRUE(append("one"));
}

TEST_F(LogFileTest, NameThatBecameAPipeOrADirectoryIsRefused) {
  append("one");
  fs::remove(path);
  ASSERT_EQ(0, mkfifo(path.c_str(), 0666));
  EXPECT_FALSE(append("two"));
  fs::remove(path);
  fs::create_directory(path);
  EXPECT_FALSE(append("three"));
  fs::remove(path);
  EXPECT_TRUE(append("four"));
  EXPECT_EQ("four", content());
}

TEST_F(LogFileTest, InterruptedWriteIsRepeated) {
  outcomes = {{EINTR, 0}, {EINTR, 0}};
  EXPECT_TRUE(append("one"));
  EXPECT_EQ("one", content());
}

TEST_F(LogFileTest, PieceThatDoesNotFitIsDropped) {
  append("one");
  outcomes = {{ENOSPC, 0}};
  EXPECT_FALSE(append("two"));
  EXPECT_TRUE(append("three"));
  EXPECT_EQ("onethree", content());
}

TEST_F(LogFileTest, HalfAPieceIsTakenBackAndNotTriedAgain) {
  append("one");
  outcomes = {{0, 2}};
  writes = 0;
  EXPECT_FALSE(append("two"));
  EXPECT_EQ(1u, writes);
  EXPECT_EQ("one", content());
  EXPECT_TRUE(append("three"));
  EXPECT_EQ("onethree", content());
}

TEST_F(LogFileTest, FirstPieceIsTakenBackAlike) {
  outcomes = {{0, 1}};
  EXPECT_FALSE(append("one"));
  EXPECT_EQ("", content());
}

TEST_F(LogFileTest, HalfAPieceThatCannotBeTakenBackStays) {
  append("one");
  outcomes = {{0, 2}};
  truncateFails = true;
  EXPECT_FALSE(append("two"));
  EXPECT_EQ("onetw", content());
  truncateFails = false;
  EXPECT_TRUE(append("three"));
  EXPECT_EQ("onetwthree", content());
}

TEST_F(LogFileTest, OneDescriptorIsKeptAndGivenBack) {
  const size_t before = openDescriptors();
  for (int i = 0; i < 20; ++i) append(directory / std::to_string(i), "text");
  EXPECT_EQ(before + 1, openDescriptors());
  append(directory, "text");
  EXPECT_EQ(before, openDescriptors());
  append("text");
  file.close();
  EXPECT_EQ(before, openDescriptors());
  { LogFile().append(path, nullptr, 0); }
  EXPECT_EQ(before, openDescriptors());
}

TEST_F(LogFileTest, DescriptorIsClosedOnExec) {
  append("text");
  bool found = false;
  for (const auto& entry : fs::directory_iterator("/proc/self/fd")) {
    std::error_code error;
    if (fs::read_symlink(entry.path(), error) != path) continue;
    found = true;
    EXPECT_EQ(FD_CLOEXEC, fcntl(std::stoi(entry.path().filename()), F_GETFD));
  }
  EXPECT_TRUE(found);
}

}  // namespace
