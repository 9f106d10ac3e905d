// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
//
// Encrypted logging in a folder that changes: it is created late or removed, or its files are
// removed, emptied and replaced while the program runs. All remaining files can be read.
#include <atomic>
#include <cstdio>
#include <thread>

#include "LogEncryptionFixture.h"

namespace logtest {
namespace {

const fs::path kFirst = fs::path(kMain) / "orb_log_p0_00";
const fs::path kSecond = fs::path(kMain) / "orb_log_p0_01";

class LogEncryptionFolderTest : public LogEncryptionFixture {};

TEST_F(LogEncryptionFolderTest, MissingDirectoryIsDoneWithoutUntilItIsThere) {
  configure();
  fs::remove_all(kMain);
  log.init("orb");
  EXPECT_TRUE(LogTestPeer::encryptionEnabled());
  EXPECT_FALSE(recording::hasEndingWith("C-Logging Init failed"));
  sayToAll("lost");
  fs::create_directory(kMain);
  for (int i = 0; i < 3100; ++i) say("text");
  // All lines are there, each in a complete file.
  const size_t first = messagesOf(linesIn(kFirst)).size();
  const size_t second = messagesOf(linesIn(kSecond)).size();
  EXPECT_EQ(3000u, first);
  EXPECT_EQ(100u, second);
}

TEST_F(LogEncryptionFolderTest, FileInTheDirectorysPlaceIsDoneWithout) {
  configure();
  fs::remove_all(kMain);
  write(kMain, "text");
  log.init("orb");
  for (int i = 0; i < 3100; ++i) say("lost");
  sayToAll("lost");
  EXPECT_EQ((Bytes{'t', 'e', 'x', 't'}), contentOf(kMain));
}

TEST_F(LogEncryptionFolderTest, RemovedFileIsCreatedByTheNextRecord) {
  configure();
  log.init("orb");
  sayToAll("one");
  fs::remove(kFirst);
  sayToAll("two");
  sayToAll("three");
  EXPECT_EQ((Texts{"two", "three"}), messagesOf(linesIn(kFirst)));
}

TEST_F(LogEncryptionFolderTest, RemovedDirectoryIsDoneWithout) {
  configure();
  log.init("orb");
  fs::remove_all(kMain);
  sayToAll("one");
  EXPECT_FALSE(fs::exists(kMain));
}

TEST_F(LogEncryptionFolderTest, ReplacedFileIsNotWrittenWhenItIsNoFile) {
  configure();
  log.init("orb");
  fs::remove(kFirst);
  ASSERT_EQ(0, mkfifo(kFirst.c_str(), 0666));
  sayToAll("to nobody");
  const int reader = open(kFirst.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
  sayToAll("to a pipe");
  char byte = 0;
  EXPECT_EQ(0, read(reader, &byte, 1));
  close(reader);

  fs::remove(kFirst);
  fs::create_directory(kFirst);
  sayToAll("to a directory");
  fs::remove(kFirst);
  fs::create_symlink("/dev/full", kFirst);
  sayToAll("to a device");
  fs::remove(kFirst);
  sayToAll("again");
  EXPECT_EQ(Texts{"again"}, messagesOf(linesIn(kFirst)));
}

TEST_F(LogEncryptionFolderTest, DirectoryInTheWayOfTheNextFileIsPassedOver) {
  configure();
  log.init("orb");
  fs::create_directory(kSecond);
  for (int i = 0; i < 2 * 3001; ++i) say("text");
  sayToAll("on");
  EXPECT_TRUE(fs::is_directory(kSecond));
  EXPECT_FALSE(linesIn(fs::path(kMain) / "orb_log_p0_02").empty());
}

TEST_F(LogEncryptionFolderTest, LateDirectoryGetsFilesThatCanBeRead) {
  configure();
  fs::remove_all("/data/vendor/orb_logs/other");
  log.init("app");
  for (int i = 0; i < 5; ++i) sayToAll("lost");
  fs::create_directory(kOther);
  sayToAll("one");
  sayToAll("two");
  EXPECT_EQ((Texts{"one", "two"}), messagesOf(linesIn(fs::path(kOther) / "orb_log_app_00")));
}

TEST_F(LogEncryptionFolderTest, DirectoryThatWasExchangedGetsANewFile) {
  configure();
  log.init("orb");
  sayToAll("one");
  fs::rename(kMain, "/data/vendor/orb_logs/former");
  sayToAll("lost");
  fs::create_directory(kMain);
  sayToAll("two");
  EXPECT_EQ(Texts{"two"}, messagesOf(linesIn(kFirst)));
  EXPECT_EQ(Texts{"one"}, messagesOf(linesIn("/data/vendor/orb_logs/former/orb_log_p0_00")));
}

TEST_F(LogEncryptionFolderTest, EmptiedFileBeginsAnew) {
  configure();
  log.init("orb");
  sayToAll("one");
  fs::resize_file(kFirst, 0);
  sayToAll("two");
  EXPECT_EQ(Texts{"two"}, messagesOf(linesIn(kFirst)));
  fs::resize_file(kFirst, 511);
  sayToAll("three");
  sayToAll("four");
  EXPECT_EQ((Texts{"three", "four"}), messagesOf(linesIn(kFirst)));
}

TEST_F(LogEncryptionFolderTest, FileThatIsFullButGoneIsMadeAgainForItsLastRecord) {
  configure();
  log.init("orb");
  for (int i = 0; i < 3000; ++i) say("text");
  fs::remove(kFirst);
  sayToAll("last of the first");
  sayToAll("first of the second");
  EXPECT_EQ(Texts{"last of the first"}, messagesOf(linesIn(kFirst)));
  EXPECT_EQ(Texts{"first of the second"}, messagesOf(linesIn(kSecond)));
}

TEST_F(LogEncryptionFolderTest, FileThatIsEmptiedAndRemovedWhileThreadsLogCanBeRead) {
  constexpr int kThreads = 3;
  configure(30000, 3);
  log.init("orb");
  std::atomic<int> writing{kThreads};
  std::vector<std::thread> writers;
  for (int t = 0; t < kThreads; ++t) {
    writers.emplace_back([this, &writing] {
      for (int i = 0; i < 5000; ++i) say("text");
      --writing;
    });
  }
  size_t emptied = 0, removed = 0;
  while (writing > 0) {
    std::error_code error;
    fs::resize_file(kFirst, 0, error);
    if (!error) ++emptied;
    if (emptied % 2 == 0 && fs::remove(kFirst, error)) ++removed;
    std::this_thread::yield();
  }
  for (std::thread& writer : writers) writer.join();
  std::printf("emptied %zu times, removed %zu times\n", emptied, removed);
  EXPECT_GT(emptied, 0u);
  EXPECT_GT(removed, 0u);
  sayToAll("last");
  const Texts messages = messagesOf(linesIn(kFirst));
  ASSERT_FALSE(messages.empty());
  EXPECT_EQ("last", messages.back());
}

}  // namespace
}  // namespace logtest
