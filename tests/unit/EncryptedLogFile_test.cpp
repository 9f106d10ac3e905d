// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
//
// One file of the encrypted log: its contents and its name.
#include "EncryptedLogFile.h"

#include "Descriptors.h"
#include "EncryptedLogFileFixture.h"

namespace logfile {
namespace {

class EncryptedLogFileTest : public EncryptedLogFileFixture {};

TEST_F(EncryptedLogFileTest, AppendsToANewAndToAnOldFile) {
  EXPECT_TRUE(append("one"));
  EXPECT_TRUE(append("two"));
  EXPECT_EQ("onetwo", content());
  EXPECT_TRUE(append(path, "3"));
  EXPECT_TRUE(append("four"));
  EXPECT_EQ("onetwo3four", content());
}

TEST_F(EncryptedLogFileTest, NothingToAppendCreatesTheFile) {
  EXPECT_TRUE(file.append(nullptr, 0));
  EXPECT_TRUE(fs::exists(path));
  EXPECT_EQ("", content());
}

TEST_F(EncryptedLogFileTest, ObjectWithoutAFileAppendsNothing) {
  EncryptedLogFile none;
  none.create();
  EXPECT_FALSE(none.start());
  EXPECT_FALSE(append(none, "text"));
}

TEST_F(EncryptedLogFileTest, FileThatExistsIsNotCreatedAgain) {
  append("text");
  file.create();
  EXPECT_EQ("text", content());
  EXPECT_TRUE(append("more"));
  EXPECT_EQ("textmore", content());
}

TEST_F(EncryptedLogFileTest, StartRemovesWhatHasTheName) {
  append("of an earlier run");
  EXPECT_TRUE(file.start());
  EXPECT_EQ("", content());
  EXPECT_TRUE(append("text"));
  EXPECT_EQ("text", content());
}

TEST_F(EncryptedLogFileTest, NewFileIsSubjectToTheMask) {
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

TEST_F(EncryptedLogFileTest, PiecesGoToTheFileThatTheyName) {
  EncryptedLogFile other = made(directory / "other");
  for (int i = 0; i < 3; ++i) {
    EXPECT_TRUE(append("a"));
    EXPECT_TRUE(append(other, "b"));
  }
  EXPECT_EQ("aaa", content());
  EXPECT_EQ("bbb", content(directory / "other"));
  // When the name is removed, the file is gone; nothing is left to append to.
  EncryptedLogFile moved(std::move(other));
  EXPECT_TRUE(append(moved, "c"));
  EXPECT_FALSE(append(other, "d"));  // NOLINT(bugprone-use-after-move)
  EXPECT_EQ("bbbc", content(directory / "other"));
}

TEST_F(EncryptedLogFileTest, RemovedFileIsCreatedAgain) {
  append("one");
  fs::remove(path);
  EXPECT_TRUE(append("two"));
  EXPECT_EQ("two", content());
}

TEST_F(EncryptedLogFileTest, RenamedFileKeepsWhatItHasAndANewOneIsBegun) {
  append("one");
  fs::rename(path, directory / "moved");
  EXPECT_TRUE(append("two"));
  EXPECT_EQ("two", content());
  EXPECT_EQ("one", content(directory / "moved"));
}

TEST_F(EncryptedLogFileTest, FileThatTookTheNameIsUsed) {
  append("one");
  std::ofstream(directory / "new") << "new";
  fs::rename(directory / "new", path);
  EXPECT_TRUE(append("two"));
  EXPECT_EQ("newtwo", content());
}

TEST_F(EncryptedLogFileTest, ShortenedFileIsContinuedAtItsEnd) {
  append("onetwo");
  fs::resize_file(path, 3);
  EXPECT_TRUE(append("four"));
  EXPECT_EQ("onefour", content());
}

TEST_F(EncryptedLogFileTest, MissingDirectoryIsFoundOnceItIsThere) {
  EncryptedLogFile deep = made(directory / "sub" / "log");
  EXPECT_FALSE(append(deep, "one"));
  fs::create_directory(directory / "sub");
  EXPECT_TRUE(append(deep, "two"));
  EXPECT_EQ("two", content(directory / "sub" / "log"));
}

TEST_F(EncryptedLogFileTest, FileInTheDirectorysPlaceIsRefused) {
  std::ofstream(directory / "sub") << "text";
  EXPECT_FALSE(append(directory / "sub" / "log", "one"));
  EXPECT_EQ("text", content(directory / "sub"));
}

TEST_F(EncryptedLogFileTest, OnlyRegularFilesAreWritten) {
  EXPECT_FALSE(append(directory, "one"));

  ASSERT_EQ(0, mkfifo(path.c_str(), 0666));
  EXPECT_FALSE(append("one"));  // a FIFO without a reader: does not wait for a reader
  const int reader = open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
  EXPECT_FALSE(append("one"));
  char byte = 0;
  EXPECT_EQ(0, read(reader, &byte, 1));  // and does not write to a FIFO with a reader
  close(reader);

  fs::remove(path);
  fs::create_symlink("/dev/full", path);
  EXPECT_FALSE(append("one"));
  fs::remove(path);
  EXPECT_TRUE(append("one"));
}

TEST_F(EncryptedLogFileTest, NameThatBecameAPipeOrADirectoryIsRefused) {
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

TEST_F(EncryptedLogFileTest, InterruptedWriteIsRepeated) {
  outcomes = {{EINTR, 0}, {EINTR, 0}};
  EXPECT_TRUE(append("one"));
  EXPECT_EQ("one", content());
}

TEST_F(EncryptedLogFileTest, PieceThatDoesNotFitIsDropped) {
  append("one");
  outcomes = {{ENOSPC, 0}};
  EXPECT_FALSE(append("two"));
  EXPECT_TRUE(append("three"));
  EXPECT_EQ("onethree", content());
}

TEST_F(EncryptedLogFileTest, HalfAPieceIsTakenBackAndNotTriedAgain) {
  append("one");
  outcomes = {{0, 2}};
  writes::calls = 0;
  EXPECT_FALSE(append("two"));
  EXPECT_EQ(1u, writes::calls);
  EXPECT_EQ("one", content());
  EXPECT_TRUE(append("three"));
  EXPECT_EQ("onethree", content());
}

TEST_F(EncryptedLogFileTest, FirstPieceIsTakenBackAlike) {
  outcomes = {{0, 1}};
  EXPECT_FALSE(append("one"));
  EXPECT_EQ("", content());
}

TEST_F(EncryptedLogFileTest, HalfAPieceThatCannotBeTakenBackGoesBeforeTheNext) {
  append("one");
  outcomes = {{0, 2}};
  truncateFails = true;
  EXPECT_FALSE(append("two"));
  EXPECT_EQ("onetw", content());
  EXPECT_FALSE(append("three"));
  EXPECT_EQ("onetw", content());
  truncateFails = false;
  EXPECT_TRUE(append("three"));
  EXPECT_EQ("onethree", content());
}

TEST_F(EncryptedLogFileTest, HalfAPieceThatSomebodyElseTookBackIsGone) {
  append("one");
  outcomes = {{0, 2}};
  truncateFails = true;
  EXPECT_FALSE(append("two"));
  fs::resize_file(path, 1);
  EXPECT_TRUE(append("three"));
  EXPECT_EQ("othree", content());
}

TEST_F(EncryptedLogFileTest, OneDescriptorIsKeptAndGivenBack) {
  const size_t before = openDescriptors();
  for (int i = 0; i < 20; ++i) {
    file = made(directory / std::to_string(i));
    append("text");
  }
  EXPECT_EQ(before + 1, openDescriptors());
  fs::remove(directory / "19");
  fs::create_directory(directory / "19");
  append("text");
  EXPECT_EQ(before, openDescriptors());
  file = made(path);
  append("text");
  EXPECT_EQ(before + 1, openDescriptors());
  file.close();
  EXPECT_EQ(before, openDescriptors());
  append(path, "text");
  EXPECT_EQ(before, openDescriptors());
}

TEST_F(EncryptedLogFileTest, DescriptorIsClosedOnExec) {
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
}  // namespace logfile
