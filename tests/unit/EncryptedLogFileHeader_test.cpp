// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
//
// A file of the encrypted log never has a piece without the header before it.
#include "EncryptedLogFileFixture.h"

namespace logfile {
namespace {

class EncryptedLogFileHeaderTest : public EncryptedLogFileFixture {
 protected:
  EncryptedLogFileHeaderTest() : EncryptedLogFileFixture("[header]") {}
};

TEST_F(EncryptedLogFileHeaderTest, StartedFileHasTheHeaderAlone) {
  EXPECT_TRUE(file.start());
  EXPECT_EQ("[header]", content());
  EXPECT_TRUE(append("one"));
  EXPECT_TRUE(append("two"));
  EXPECT_EQ("[header]onetwo", content());
}

TEST_F(EncryptedLogFileHeaderTest, CreatedFileIsEmptyUntilItIsStarted) {
  file.create();
  EXPECT_EQ("", content());
  EXPECT_TRUE(file.start());
  EXPECT_EQ("[header]", content());
}

TEST_F(EncryptedLogFileHeaderTest, FileThatWasNotStartedGetsItBeforeTheFirstPiece) {
  EXPECT_TRUE(append("one"));
  EXPECT_EQ("[header]one", content());
}

TEST_F(EncryptedLogFileHeaderTest, RemovedEmptiedAndReplacedFilesGetItAgain) {
  file.start();
  append("one");
  fs::remove(path);
  EXPECT_TRUE(append("two"));
  EXPECT_EQ("[header]two", content());
  fs::resize_file(path, 0);
  EXPECT_TRUE(append("three"));
  EXPECT_EQ("[header]three", content());
  leave(directory / "new", "");
  fs::rename(directory / "new", path);
  EXPECT_TRUE(append("four"));
  EXPECT_TRUE(append("five"));
  EXPECT_EQ("[header]fourfive", content());
}

TEST_F(EncryptedLogFileHeaderTest, LateDirectoryGetsItToo) {
  EncryptedLogFile deep = made(directory / "sub" / "log");
  deep.create();
  EXPECT_FALSE(deep.start());
  EXPECT_FALSE(append(deep, "lost"));
  fs::create_directory(directory / "sub");
  EXPECT_TRUE(append(deep, "one"));
  EXPECT_TRUE(append(deep, "two"));
  EXPECT_EQ("[header]onetwo", content(directory / "sub" / "log"));
}

TEST_F(EncryptedLogFileHeaderTest, FullDiskAtTheStartGetsItOnceThereIsRoom) {
  outcomes = {{ENOSPC, 0}, {ENOSPC, 0}};
  EXPECT_FALSE(file.start());
  EXPECT_FALSE(append("lost"));
  EXPECT_EQ("", content());
  EXPECT_TRUE(append("one"));
  EXPECT_EQ("[header]one", content());
}

TEST_F(EncryptedLogFileHeaderTest, HalfOfItDoesNotStay) {
  outcomes = {{0, 3}};
  EXPECT_FALSE(file.start());
  EXPECT_EQ("", content());
  outcomes = {{0, 7}};
  EXPECT_FALSE(append("lost"));
  EXPECT_EQ("", content());
  EXPECT_TRUE(append("one"));
  EXPECT_EQ("[header]one", content());
}

TEST_F(EncryptedLogFileHeaderTest, HalfThatCannotBeTakenBackGoesBeforeThePiece) {
  outcomes = {{0, 3}};
  truncateFails = true;
  EXPECT_FALSE(file.start());
  EXPECT_FALSE(append("lost"));
  EXPECT_EQ("[he", content());
  truncateFails = false;
  EXPECT_TRUE(append("one"));
  EXPECT_EQ("[header]one", content());
}

TEST_F(EncryptedLogFileHeaderTest, StaysAloneWhenThePieceDoesNotFit) {
  outcomes = {{0, kAll}, {0, 2}};
  EXPECT_FALSE(append("lost"));
  EXPECT_EQ("[header]", content());
  EXPECT_TRUE(append("one"));
  EXPECT_EQ("[header]one", content());
}

TEST_F(EncryptedLogFileHeaderTest, FileThatWasCutInsideItIsBegunAnew) {
  file.start();
  append("one");
  for (const size_t size : {1u, 7u}) {
    fs::resize_file(path, size);
    EXPECT_TRUE(append("two"));
    EXPECT_EQ("[header]two", content());
  }
}

TEST_F(EncryptedLogFileHeaderTest, FileThatWasCutBehindItIsContinued) {
  file.start();
  for (const char* text : {"one", "two", "three"}) append(text);
  fs::resize_file(path, 14);
  EXPECT_TRUE(append("four"));
  EXPECT_EQ("[header]onetwofour", content());
}

TEST_F(EncryptedLogFileHeaderTest, FileThatWasEmptiedInTheMomentBeforeAPieceIsBegunAnew) {
  file.start();
  append("one");
  outcomes = {{0, kAll, [this] { fs::resize_file(path, 0); }}};
  append("two");
  EXPECT_EQ("two", content());
  EXPECT_TRUE(append("three"));
  EXPECT_TRUE(append("four"));
  EXPECT_EQ("[header]threefour", content());
  // Between the header and the piece.
  fs::resize_file(path, 0);
  outcomes = {{0, kAll}, {0, kAll, [this] { fs::resize_file(path, 0); }}};
  append("five");
  EXPECT_EQ("five", content());
  EXPECT_TRUE(append("six"));
  EXPECT_EQ("[header]six", content());
}

// Whoever created the file, its header is checked.
TEST_F(EncryptedLogFileHeaderTest, ShortFileOfSomebodyElseIsLeftAlone) {
  file.start();
  leave(directory / "new", "note");
  fs::rename(directory / "new", path);
  EXPECT_FALSE(append("lost"));
  EXPECT_EQ("note", content());
  fs::remove(path);
  EXPECT_TRUE(append("one"));
  EXPECT_EQ("[header]one", content());
}

TEST_F(EncryptedLogFileHeaderTest, FileThatCannotBeRemovedAtTheStartGetsItBehindWhatItHas) {
  leave(path, "[former]old");
  unlinkFails = true;
  EXPECT_TRUE(file.start());
  EXPECT_TRUE(append("one"));
  EXPECT_EQ("[former]old[header]one", content());
}

}  // namespace
}  // namespace logfile
