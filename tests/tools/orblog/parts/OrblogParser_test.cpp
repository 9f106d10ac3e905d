// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "OrblogParserFixture.h"

using namespace orblogtest;

namespace {

TEST_F(OrblogParser, RecordsComeWithTheirOffsets) {
  parse(threeRecords());
  EXPECT_EQ(texts(), (Texts{first, second, third}));
  EXPECT_EQ(out.records[0].offset, 512u);
  EXPECT_EQ(out.records[1].offset, 642u);
  EXPECT_EQ(out.records[2].offset, 872u);
  EXPECT_TRUE(findings().empty());
}

TEST_F(OrblogParser, PiecesOfAnySizeGiveTheSame) {
  Bytes file = threeRecords();
  file[700] ^= 1;
  for (const size_t piece : {1u, 2u, 3u, 29u, 511u, 512u, 513u, 541u}) {
    out = {};
    parse(file, piece);
    EXPECT_EQ(texts(), (Texts{first, third})) << piece;
    EXPECT_EQ(findings(), Texts{"offset 642: a record of 230 bytes fails authentication; readable "
                                "again at offset 872"})
        << piece;
  }
}

TEST_F(OrblogParser, HeaderAloneAndNothingAtAllAreNoFault) {
  parse(headerOf(keyOf(1)));
  parse({});
  EXPECT_TRUE(out.records.empty());
  EXPECT_TRUE(findings().empty());
}

TEST_F(OrblogParser, EmptyAndLongestTextsAreRead) {
  Bytes file = headerOf(keyOf(1));
  const Texts expected = {"", std::string(511, 'x'), "", std::string(65535 - 28, 'y')};
  for (const std::string& text : expected) file += sealer.record(text);
  parse(file);
  EXPECT_EQ(texts(), expected);
  EXPECT_TRUE(findings().empty());
}

TEST_F(OrblogParser, CutHeaderIsNamedWithItsSize) {
  Bytes file = headerOf(keyOf(1));
  file.resize(100);
  parse(file);
  EXPECT_EQ(findings(), Texts{"offset 0: the header is cut off: 512 bytes expected, 100 present"});
}

TEST_F(OrblogParser, CutLastRecordIsNamedWithBothSizes) {
  Bytes file = threeRecords();
  file.resize(1000);
  parse(file);
  EXPECT_EQ(texts(), (Texts{first, second}));
  EXPECT_EQ(findings(),
            Texts{"offset 872: the last record is cut off: 330 bytes expected, 128 present"});
}

TEST_F(OrblogParser, OneByteOfARecordIsACutRecord) {
  Bytes file = threeRecords();
  file.resize(873);
  parse(file);
  EXPECT_EQ(texts(), (Texts{first, second}));
  EXPECT_EQ(findings(), Texts{"offset 872: the last record is cut off: 1 byte present"});
}

TEST_F(OrblogParser, EveryFlippedByteOfARecordLosesThatRecordOnly) {
  const Bytes whole = threeRecords();
  for (size_t at = 642; at < 872; ++at) {
    Bytes file = whole;
    file[at] ^= 0xFF;
    out = {};
    parse(file);
    EXPECT_EQ(texts(), (Texts{first, third})) << at;
    ASSERT_EQ(out.findings.size(), 1u) << at;
    EXPECT_EQ(out.findings[0].offset, 642u) << at;
    EXPECT_EQ(out.findings[0].end, 872u) << at;
  }
}

TEST_F(OrblogParser, LengthThatCannotBeIsSearchedPast) {
  Bytes file = threeRecords();
  file[642] = 27;
  file[643] = 0;
  parse(file);
  EXPECT_EQ(texts(), (Texts{first, third}));
  EXPECT_EQ(findings(), Texts{"offset 642: record length 27 cannot be right (230 bytes); readable "
                              "again at offset 872"});
}

TEST_F(OrblogParser, LengthBeyondTheFileIsSearchedPast) {
  Bytes file = threeRecords();
  file[642] = 0xFF;
  file[643] = 0xFF;
  parse(file);
  EXPECT_EQ(texts(), (Texts{first, third}));
  EXPECT_EQ(findings(), Texts{"offset 642: record length 65535 cannot be right (230 bytes); "
                              "readable again at offset 872"});
}

TEST_F(OrblogParser, LengthThatCannotBeIsNoCutRecordAtTheEndEither) {
  for (const uint8_t length : {uint8_t{5}, uint8_t{255}}) {
    Bytes file = headerOf(keyOf(1));
    file += Bytes{length, length == 5 ? uint8_t{0} : uint8_t{255}, 0};
    for (const size_t piece : {1u, 4096u}) {
      out = {};
      parse(file, piece);
      EXPECT_EQ(findings(),
                Texts{std::string("offset 512: record length ") + (length == 5 ? "5" : "65535") +
                      " cannot be right (3 bytes); nothing readable follows"});
    }
  }
}

TEST_F(OrblogParser, LengthThatCoversTheNextRecordDoesNotHideIt) {
  Bytes file = threeRecords();
  file += sealer.record("fourth");
  const size_t length = 228 + 330;
  file[642] = static_cast<uint8_t>(length & 0xFF);
  file[643] = static_cast<uint8_t>(length >> 8);
  parse(file);
  EXPECT_EQ(texts(), (Texts{first, third, "fourth"}));
  EXPECT_EQ(findings(), Texts{"offset 642: a record fails authentication and no record follows at "
                              "its length (230 bytes); readable again at offset 872"});
}

TEST_F(OrblogParser, MissingBytesInTheMiddleLoseOneRecord) {
  Bytes file = threeRecords();
  file.erase(file.begin() + 700, file.begin() + 710);
  parse(file);
  EXPECT_EQ(texts(), (Texts{first, third}));
  EXPECT_EQ(out.records[1].offset, 862u);
}

TEST_F(OrblogParser, UnreadableRecordsInARowAreCountedTogether) {
  Bytes file = headerOf(keyOf(1));
  for (int i = 0; i < 3; ++i) file += other.record(second);
  file += sealer.record(first);
  for (int i = 0; i < 2; ++i) file += other.record(second);
  parse(file);
  EXPECT_EQ(texts(), Texts{first});
  EXPECT_EQ(findings(),
            (Texts{"offset 512: 3 records (690 bytes) fail authentication; readable again at "
                   "offset 1202",
                   "offset 1332: 2 records (460 bytes) fail authentication; nothing readable "
                   "follows"}));
}

TEST_F(OrblogParser, UnreadableRecordsBeforeACutOneAreNamedApart) {
  Bytes file = headerOf(keyOf(1));
  file += other.record(second);
  file += other.record(second);
  file.resize(file.size() - 1);
  parse(file);
  EXPECT_EQ(findings(),
            (Texts{"offset 512: a record of 230 bytes fails authentication; nothing readable "
                   "follows",
                   "offset 742: the last record is cut off: 230 bytes expected, 229 present"}));
}

TEST_F(OrblogParser, RecordsOfAnotherSessionAreReadWithItsKey) {
  addKey(keyOf(2), "another file");
  Bytes file = headerOf(keyOf(1));
  for (int i = 0; i < 3; ++i) {
    file += sealer.record("mine");
    file += other.record("theirs");
  }
  parse(file);
  EXPECT_EQ(texts(), (Texts{"mine", "theirs", "mine", "theirs", "mine", "theirs"}));
  EXPECT_TRUE(findings().empty());
}

TEST_F(OrblogParser, FileWithoutHeaderIsReadWithAKnownKey) {
  addKey(keyOf(1), "another file");
  for (const size_t count : {1u, 2u, 20u}) {
    out = {};
    Bytes file;
    for (size_t i = 0; i < count; ++i) file += sealer.record(second);
    parse(file);
    EXPECT_EQ(texts(), Texts(count, second));
    EXPECT_EQ(findings(), Texts{"offset 0: no header, the file was removed while it was written "
                                "and made anew; read with the session key of another file"});
    EXPECT_FALSE(hasProblem());
  }
}

TEST_F(OrblogParser, FileWithoutHeaderThatBeginsWithALongRecordIsReadInAnyPieces) {
  addKey(keyOf(1), "another file");
  Bytes file = sealer.record(std::string(511, 'x'));
  file += sealer.record(first);
  parse(file, 1);
  EXPECT_EQ(texts(), (Texts{std::string(511, 'x'), first}));
}

TEST_F(OrblogParser, DamagedHeaderLeavesTheRecordsToAKnownKey) {
  addKey(keyOf(1), "another file");
  Bytes file = threeRecords();
  file[0] = 0;
  parse(file);
  EXPECT_EQ(texts(), (Texts{first, second, third}));
  EXPECT_EQ(findings(), Texts{"offset 0: the header gives no session key with this private key: "
                              "another key, a damaged header, or not an encrypted log file"});
}

TEST_F(OrblogParser, DamagedHeaderAndFirstRecordAreSearchedPast) {
  addKey(keyOf(1), "another file");
  Bytes file = threeRecords();
  file[0] = 0;
  file[520] ^= 1;
  parse(file);
  EXPECT_EQ(texts(), (Texts{second, third}));
  EXPECT_EQ(findings().back(), "offset 642: readable from here on");
}

TEST_F(OrblogParser, WrongKeyIsSaidOnce) {
  Bytes file = threeRecords();
  file[0] = 0;
  parse(file);
  EXPECT_TRUE(out.records.empty());
  EXPECT_EQ(out.findings.size(), 1u);
  EXPECT_EQ(out.findings[0].kind, Finding::Kind::HeaderUnreadable);
}

TEST_F(OrblogParser, HeaderOfZerosIsExplained) {
  Bytes file = threeRecords();
  std::fill_n(file.begin(), 512, uint8_t{0});
  parse(file);
  EXPECT_TRUE(out.records.empty());
  EXPECT_EQ(findings(), Texts{"offset 0: the header is all zeros: the session key could not be "
                              "wrapped when the file was made, for example because the public key "
                              "is too small; nobody can read the records"});
}

TEST_F(OrblogParser, SecondHeaderInAFileIsFollowed) {
  Bytes file = headerOf(keyOf(1));
  file += headerOf(keyOf(2));
  file += other.record("theirs");
  file += sealer.record("mine");
  parse(file);
  EXPECT_EQ(texts(), (Texts{"theirs", "mine"}));
  EXPECT_EQ(findings(),
            Texts{"offset 512: another header begins here; continuing with its session key"});
  EXPECT_FALSE(hasProblem());
}

TEST_F(OrblogParser, SecondHeaderIsFollowedHoweverItComesInPieces) {
  Bytes file = headerOf(keyOf(1));
  file += sealer.record("mine");
  const size_t offset = file.size();
  file += headerOf(keyOf(2));
  file += other.record("theirs");
  for (const size_t piece : {1u, 300u, 511u}) {
    ring = KeyRing();
    out = {};
    parse(file, piece);
    EXPECT_EQ(texts(), (Texts{"mine", "theirs"})) << piece;
    EXPECT_EQ(findings(), Texts{"offset " + std::to_string(offset) +
                                ": another header begins here; continuing with its session key"})
        << piece;
  }
}

TEST_F(OrblogParser, WhatMayBecomeAHeaderDoesNotHoldUpGoodRecords) {
  const size_t foreign = sizeof "foreign" - 1 + 30;
  Bytes file = headerOf(keyOf(1));
  file += other.record("foreign");
  file += sealer.record("good");
  for (const size_t piece : {1ul, 512 + foreign, file.size()}) {
    out = {};
    LogParser parser(ring, opener());
    for (size_t at = 0; at < file.size(); at += piece)
      parser.feed({file.data() + at, std::min(piece, file.size() - at)}, out);
    EXPECT_EQ(texts(), Texts{"good"}) << piece;
    EXPECT_EQ(findings(), Texts{"offset 512: a record of 37 bytes fails authentication; readable "
                                "again at offset 549"})
        << piece;
  }
}

TEST_F(OrblogParser, RecordThatIsStillBeingWrittenIsWaitedFor) {
  const Bytes file = threeRecords();
  LogParser parser(ring, opener());
  parser.feed({file.data(), 1201}, out);
  EXPECT_EQ(texts(), (Texts{first, second}));
  parser.feed({file.data() + 1201, 1}, out);
  EXPECT_EQ(texts(), (Texts{first, second, third}));
  parser.finish(out);
  EXPECT_TRUE(findings().empty());
}

TEST_F(OrblogParser, RecordInThePlaceOfOneThatWasTakenBackIsRead) {
  const Bytes file = threeRecords();
  LogParser parser(ring, opener());
  parser.feed({file.data(), 1000}, out);
  EXPECT_TRUE(parser.goBack(872));
  EXPECT_EQ(parser.restart(), 872u);
  const Bytes anew = sealer.record("anew");
  parser.feed({anew.data(), anew.size()}, out);
  parser.finish(out);
  EXPECT_EQ(texts(), (Texts{first, second, "anew"}));
  EXPECT_TRUE(findings().empty());
  EXPECT_FALSE(parser.goBack(871));
}

TEST_F(OrblogParser, UnreadableBytesThatWereTakenBackAreForgotten) {
  Bytes file = headerOf(keyOf(1));
  file += sealer.record(first);
  file += Bytes(1000, 0);  // not the length of a record, so it does not wait for more
  LogParser parser(ring, opener());
  parser.feed({file.data(), file.size()}, out);
  EXPECT_GT(parser.restart(), 700u);
  EXPECT_TRUE(parser.goBack(700));
  EXPECT_EQ(parser.restart(), 642u);
  const Bytes anew = sealer.record("anew");
  parser.feed({anew.data(), anew.size()}, out);
  parser.finish(out);
  EXPECT_EQ(texts(), (Texts{first, "anew"}));
  EXPECT_TRUE(findings().empty());
}

TEST_F(OrblogParser, WhatLooksLikeTheStartOfARecordDoesNotHoldUpGoodOnes) {
  Bytes file = threeRecords();
  file.resize(872);
  file[642] ^= 1;
  file[652] = 200;  // 200 bytes from here would be after the end
  file[653] = 1;
  file += sealer.record("good");
  LogParser parser(ring, opener());
  parser.feed({file.data(), file.size()}, out);
  EXPECT_EQ(texts(), (Texts{first, "good"}));
}

TEST_F(OrblogParser, AHundredThousandRecordsAreRead) {
  Bytes file = headerOf(keyOf(1));
  file.reserve(24000000);
  for (int i = 0; i < 100000; ++i) file += sealer.record(second + std::to_string(i));
  parse(file);
  ASSERT_EQ(out.records.size(), 100000u);
  EXPECT_EQ(out.records.back().text, second + "99999");
  EXPECT_TRUE(findings().empty());
}

}  // namespace
