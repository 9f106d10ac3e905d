// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include <gtest/gtest.h>

#include <algorithm>

#include "OrblogFiles.h"
#include "OrblogRun.h"

using namespace orblogtest;

namespace {

// Every test adds data only after it has seen the earlier output, and ends the program after it has
// seen the rest.
class OrblogFollow : public testing::Test {
 protected:
  OrblogFollow() {
    fs::create_directories(logs / "main");
    writeFile(file, header);
    add(file, "first");
  }
  void add(const fs::path& path, const std::string& text, Sealer* with = nullptr) {
    const Bytes record = (with == nullptr ? sealer : *with).record(text);
    appendFile(path, record);
  }
  std::vector<std::string> arguments(const std::string& what, std::vector<std::string> more = {}) {
    more.insert(more.begin(), {"decrypt", "--follow", "--key", keyPair().path(), what});
    return more;
  }
  // Also writes the first record of a new file.
  void addElsewhere(const std::string& text) {
    const fs::path elsewhere = logs / "orb_log_p0_01";
    if (!fs::exists(elsewhere)) writeFile(elsewhere, header);
    add(elsewhere, text);
  }
  // The first bytes of a record, and the rest of it.
  Bytes addHalf(const std::string& text) {
    const Bytes record = sealer.record(text);
    appendFile(file, Bytes(record.begin(), record.begin() + 20));
    return Bytes(record.begin() + 20, record.end());
  }
  void expectEnd(Orblog& program, const std::string& out, const std::string& err = "") {
    program.signal(SIGINT);
    EXPECT_EQ(program.wait(), 0);
    EXPECT_EQ(program.out(), out);
    EXPECT_EQ(program.err(), err);
  }

  TemporaryDirectory logs;
  const Bytes header = keyPair().header(keyOf(1));
  Sealer sealer{keyOf(1)};
  const fs::path file = logs / "main/orb_log_p0_00";
};

TEST_F(OrblogFollow, NewRecordsArePrinted) {
  Orblog program(arguments(logs.string()));
  ASSERT_TRUE(program.waitForOut("first\n"));
  add(file, "second");
  ASSERT_TRUE(program.waitForOut("second\n"));
  add(file, "third");
  ASSERT_TRUE(program.waitForOut("third\n"));
  expectEnd(program, "first\nsecond\nthird\n");
}

TEST_F(OrblogFollow, SigtermEndsItToo) {
  Orblog program(arguments(logs.string()));
  ASSERT_TRUE(program.waitForOut("first\n"));
  program.signal(SIGTERM);
  EXPECT_EQ(program.wait(), 0);
}

TEST_F(OrblogFollow, HalfARecordIsWaitedFor) {
  Orblog program(arguments(logs.string()));
  ASSERT_TRUE(program.waitForOut("first\n"));
  const Bytes rest = addHalf("halved");
  // The record of another file shows that the half record was there during a whole round of
  // reading.
  addElsewhere("elsewhere");
  ASSERT_TRUE(program.waitForOut("elsewhere\n"));
  appendFile(file, rest);
  ASSERT_TRUE(program.waitForOut("halved\n"));
  expectEnd(program, "first\nelsewhere\nhalved\n");
}

// As the library does on a full disk.
TEST_F(OrblogFollow, RecordThatItsWriterTookBackIsForgotten) {
  Orblog program(arguments(logs.string()));
  ASSERT_TRUE(program.waitForOut("first\n"));
  const uintmax_t whole = fs::file_size(file);
  addHalf("taken back");
  addElsewhere("half was seen");
  ASSERT_TRUE(program.waitForOut("half was seen\n"));
  fs::resize_file(file, whole);
  addElsewhere("none was seen");
  ASSERT_TRUE(program.waitForOut("none was seen\n"));
  add(file, "second");
  ASSERT_TRUE(program.waitForOut("second\n"));
  expectEnd(program, "first\nhalf was seen\nnone was seen\nsecond\n");
}

TEST_F(OrblogFollow, RecordInThePlaceOfOneThatWasTakenBackIsRead) {
  Orblog program(arguments(logs.string()));
  ASSERT_TRUE(program.waitForOut("first\n"));
  const uintmax_t whole = fs::file_size(file);
  addHalf("taken back");
  addElsewhere("half was seen");
  ASSERT_TRUE(program.waitForOut("half was seen\n"));
  // The program sees both at the same time.
  program.stop();
  fs::resize_file(file, whole);
  add(file, "second");
  program.signal(SIGCONT);
  ASSERT_TRUE(program.waitForOut("second\n"));
  expectEnd(program, "first\nhalf was seen\nsecond\n");
}

// One descriptor is enough to list directories and to read the files one after the other, but none
// is left for waiting.
TEST_F(OrblogFollow, SignalEndsItWhenThereAreNoDescriptorsLeft) {
  for (const int descriptors : {1, 2, 3}) {
    fs::remove_all(logs / "other");
    Orblog program(arguments(logs.string()), descriptors);
    ASSERT_TRUE(program.waitForOut("first\n"));
    const std::string second = "second " + std::to_string(descriptors);
    add(file, second);
    ASSERT_TRUE(program.waitForOut(second + "\n"));
    fs::create_directories(logs / "other");
    writeFile(logs / "other/orb_log_p0_00", header);
    add(logs / "other/orb_log_p0_00", "new file");
    ASSERT_TRUE(program.waitForOut("new file\n"));
    program.signal(SIGINT);
    EXPECT_EQ(program.wait(), 0);
    EXPECT_EQ(program.err(), "");
  }
}

TEST_F(OrblogFollow, MoreFilesThanDescriptorsAreFollowed) {
  fs::create_directories(logs / "other");
  const auto name = [this](int i) { return logs / ("other/orb_log_p0_" + std::to_string(i)); };
  for (int i = 10; i < 60; ++i) {
    writeFile(name(i), header);
    add(name(i), "more " + std::to_string(i));
  }
  Orblog program(arguments(logs.string()), 13);
  for (int i = 10; i < 60; ++i) ASSERT_TRUE(program.waitForOut("more " + std::to_string(i) + "\n"));
  for (int i = 10; i < 60; ++i) {
    add(name(i), "and " + std::to_string(i));
    ASSERT_TRUE(program.waitForOut("and " + std::to_string(i) + "\n"));
  }
  program.signal(SIGINT);
  EXPECT_EQ(program.wait(), 0);
  EXPECT_EQ(std::count(program.out().begin(), program.out().end(), '\n'), 101);
  EXPECT_EQ(program.err(), "");
}

TEST_F(OrblogFollow, HalfARecordAtTheEndIsNoFault) {
  addHalf("halved");
  Orblog program(arguments(logs.string()));
  ASSERT_TRUE(program.waitForOut("first\n"));
  expectEnd(program, "first\n");
}

TEST_F(OrblogFollow, RotationIsFollowedInTheOrderOfWriting) {
  Orblog program(arguments(logs.string()));
  ASSERT_TRUE(program.waitForOut("first\n"));
  const fs::path next = logs / "main/orb_log_p0_01";
  writeFile(next, header);
  add(file, "last of the old file");
  add(next, "first of the new file");
  fs::remove(file);
  ASSERT_TRUE(program.waitForOut("first of the new file\n"));
  // The number is used again, perhaps with the inode of the old file.
  writeFile(file, header);
  add(next, "last of the second");
  add(file, "round again");
  ASSERT_TRUE(program.waitForOut("round again\n"));
  expectEnd(program,
            "first\nlast of the old file\nfirst of the new file\nlast of the second\nround "
            "again\n");
}

TEST_F(OrblogFollow, FileOfTheSameNameIsReadFromItsStart) {
  Orblog program(arguments(file.string()));
  ASSERT_TRUE(program.waitForOut("first\n"));
  fs::remove(file);
  writeFile(file, header);
  add(file, "anew");
  ASSERT_TRUE(program.waitForOut("anew\n"));
  expectEnd(program, "first\nanew\n");
}

TEST_F(OrblogFollow, FileThatWasCutShortIsReadFromItsStart) {
  Orblog program(arguments(logs.string()));
  ASSERT_TRUE(program.waitForOut("first\n"));
  fs::resize_file(file, 512);
  // The program must check the shorter file in this state; a record in another file shows that it
  // did.
  addElsewhere("elsewhere");
  ASSERT_TRUE(program.waitForOut("elsewhere\n"));
  add(file, "x");
  ASSERT_TRUE(program.waitForOut("x\n"));
  expectEnd(program, "first\nelsewhere\nx\n");
}

TEST_F(OrblogFollow, DirectoryThatAppearsLaterIsFollowed) {
  Orblog program(arguments(logs.string()));
  ASSERT_TRUE(program.waitForOut("first\n"));
  fs::create_directories(logs / "other");
  writeFile(logs / "other/orb_log_app_00", header);
  add(logs / "other/orb_log_app_00", "another program");
  ASSERT_TRUE(program.waitForOut("another program\n"));
  expectEnd(program, "first\nanother program\n");
}

TEST_F(OrblogFollow, FileRemovedUnderWayAndMadeAnewIsReadWithoutItsHeader) {
  Orblog program(arguments(logs.string()));
  ASSERT_TRUE(program.waitForOut("first\n"));
  fs::remove(file);
  add(file, "headless");
  ASSERT_TRUE(program.waitForOut("headless\n"));
  expectEnd(program, "first\nheadless\n",
            "orblog: " + file.string() +
                ": offset 0: no header, the file was removed while it was written and made anew; "
                "read with the session key of " +
                file.string() + "\n");
}

TEST_F(OrblogFollow, UnreadableRecordsAreReportedWhenReadingGoesOn) {
  Orblog program(arguments(logs.string()));
  ASSERT_TRUE(program.waitForOut("first\n"));
  const size_t offset = fs::file_size(file);
  Sealer other(keyOf(2), 1);
  add(file, "not for us", &other);
  add(file, "second");
  ASSERT_TRUE(program.waitForOut("second\n"));
  expectEnd(program, "first\nsecond\n",
            "orblog: " + file.string() + ": offset " + std::to_string(offset) +
                ": a record of 40 bytes fails authentication; readable again at offset " +
                std::to_string(offset + 40) + "\n");
}

TEST_F(OrblogFollow, SelectionHoldsForNewLines) {
  Orblog program(arguments(logs.string(), {"--level", "E"}));
  add(file, lineAt("10:00:01.000", "quiet", 'D'));
  add(file, lineAt("10:00:02.000", "loud", 'E'));
  ASSERT_TRUE(program.waitForOut("loud\n"));
  expectEnd(program, "first\n" + lineAt("10:00:02.000", "loud", 'E') + "\n",
            "orblog: " + file.string() +
                ": 1 record is no log line, without a level or time to select by: 1 printed, 0 "
                "left out\n");
}

}  // namespace
