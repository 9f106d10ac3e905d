// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
// Reading the same bytes again with a small limit for the output: the records must be the same as
// the first time, for all kinds of faults. Also holes, which are skipped as if they were read.
#include "OrblogParserFixture.h"
#include "Rounds.h"

using namespace orblogtest;

namespace {

class OrblogParserAgain : public OrblogParser {
 protected:
  // The same numbers in every run.
  size_t below(size_t limit) {
    mState = mState * 1664525u + 1013904223u;
    return (mState >> 8) % limit;
  }
  // A file with many kinds of faults.
  Bytes damagedFile() {
    Bytes file = below(4) == 0 ? Bytes() : headerOf(keyOf(1));
    for (size_t i = 0; i < 40; ++i) {
      file += (below(4) == 0 ? other : sealer)
                  .record(std::to_string(i) + std::string(below(below(10) == 0 ? 9000 : 300), 'x'));
      const size_t fault = below(12);
      if (fault == 0) file[file.size() - 1 - below(20)] ^= 1;
      if (fault == 1) file += Bytes(below(1000), static_cast<uint8_t>(below(3)));
      if (fault == 2) file += headerOf(keyOf(static_cast<uint8_t>(2 + below(3))));
      if (fault == 3) file.resize(file.size() - below(30));
    }
    return file;
  }
  // Like a complete file: `piece` bytes at a time; bytes that were not parsed are passed again.
  static Parsed read(LogParser parser, const Bytes& file, size_t piece, size_t room) {
    Parsed all;
    for (bool more = true; more;) {
      Parsed some;
      some.room = room;
      const size_t at = parser.restart(), size = std::min(piece, file.size() - at);
      const bool rest = at + size < file.size();
      more = !parser.feed({file.data() + at, size}, some, rest) || rest;
      if (!more) parser.finish(some);
      EXPECT_LE(some.size, room < SIZE_MAX ? room + 70000 : room);
      std::move(some.records.begin(), some.records.end(), std::back_inserter(all.records));
      std::move(some.findings.begin(), some.findings.end(), std::back_inserter(all.findings));
    }
    return all;
  }

 private:
  uint32_t mState = 1;
};

TEST_F(OrblogParserAgain, GivesTheSameRecordsWithAnyRoomAndBudget) {
  size_t total = 0;
  for (int round = 0; round < fewerIf(emulated(), 300); ++round) {
    SCOPED_TRACE(round);
    const Bytes file = damagedFile();
    ring = KeyRing();
    addKey(keyOf(2), "another file");
    LogParser parser(ring, opener());
    if (round % 3 != 0) parser.setSearchBudget(below(50000));
    LogParser again = parser;
    again.knowNoMoreKeys();
    out = read(std::move(parser), file, 1 << 17, SIZE_MAX);
    const Texts expected = texts(), faults = findings();
    total += expected.size();
    // Keys from files that are read later make no difference.
    for (uint8_t key = 3; key < 9; ++key) addKey(keyOf(key), "a later file");
    for (const size_t room : {size_t{1}, size_t{1000}, SIZE_MAX}) {
      for (const size_t piece : {size_t{70000}, size_t{1} << 17}) {
        out = read(again, file, piece, room);
        ASSERT_TRUE(texts() == expected) << room << " " << piece;
        ASSERT_EQ(findings(), faults) << room << " " << piece;
      }
    }
  }
  EXPECT_GT(total, fewerIf(emulated(), 3000u));
}

// The header's key is on the ring behind the later file's.
TEST_F(OrblogParserAgain, HeaderBringsItsOwnKeyAndNoOtherOne) {
  LogParser parser(ring, opener());
  parser.knowNoMoreKeys();
  addKey(keyOf(3), "a later file");
  Sealer later(keyOf(3));
  Bytes file = headerOf(keyOf(1));
  file += later.record("not known");
  file += sealer.record("known");
  file += later.record("not known either");
  out = read(parser, file, 1 << 17, SIZE_MAX);
  EXPECT_EQ(Texts{"known"}, texts());
}

TEST_F(OrblogParserAgain, WithoutSearchBudgetPiecesMakeNoDifferenceEither) {
  for (int round = 0; round < fewerIf(emulated(), 300); ++round) {
    SCOPED_TRACE(round);
    const Bytes file = damagedFile();
    ring = KeyRing();
    addKey(keyOf(2), "another file");
    const LogParser parser = [&] {
      LogParser made(ring, opener());
      made.setSearchBudget(below(20000));
      made.knowNoMoreKeys();
      return made;
    }();
    out = read(parser, file, file.size() + 1, SIZE_MAX);
    const Texts expected = texts(), faults = findings();
    for (const size_t piece : {size_t{600}, size_t{3000}}) {
      out = {};
      LogParser inPieces = parser;
      for (size_t at = 0; at < file.size(); at += piece) {
        const size_t size = std::min(piece, file.size() - at);
        inPieces.feed({file.data() + at, size}, out, at + size < file.size());
      }
      inPieces.finish(out);
      ASSERT_TRUE(texts() == expected) << piece;
      ASSERT_EQ(findings(), faults) << piece;
    }
  }
}

TEST_F(OrblogParserAgain, ZerosArePassedOverAsIfTheyWereRead) {
  for (const int count : {0, 1, 2, 30, 700, 70000, 200000}) {
    const auto zeros = static_cast<size_t>(count);
    for (const uint64_t budget : {uint64_t{0}, uint64_t{1} << 20}) {
      for (const size_t start : {size_t{0}, size_t{512}, size_t{700}, size_t{872}, size_t{1202}}) {
        SCOPED_TRACE(std::to_string(zeros) + " from " + std::to_string(start));
        Bytes file = threeRecords();
        file.insert(file.begin() + static_cast<std::ptrdiff_t>(start), zeros, 0);
        ring = KeyRing();
        addKey(keyOf(1), "another file");
        LogParser parser(ring, opener());
        parser.setSearchBudget(budget);
        LogParser passing = parser;
        out = read(std::move(parser), file, 1 << 17, SIZE_MAX);
        const Texts expected = texts(), faults = findings();
        out = {};
        size_t fed = 0;
        for (bool more = true; more;) {
          size_t at = passing.restart();
          const bool inHole = at >= start && at < start + zeros;
          if (inHole && passing.passZeros(start + zeros)) at = passing.restart();
          const size_t size = std::min(size_t{1} << 17, file.size() - at);
          fed += size;
          more = at + size < file.size();
          passing.feed({file.data() + at, size}, out, more);
        }
        passing.finish(out);
        EXPECT_EQ(texts(), expected);
        EXPECT_EQ(findings(), faults);
        EXPECT_LT(fed, 210000u);
      }
    }
  }
}

}  // namespace
