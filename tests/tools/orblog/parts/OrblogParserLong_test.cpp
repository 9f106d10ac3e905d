// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
// Records that are longer than those of the library, with pieces that end anywhere within them.
#include "OrblogParserFixture.h"
#include "Rounds.h"

using namespace orblogtest;

namespace {

constexpr size_t kLongest = 65535 - 28;
constexpr size_t kLargestRecord = 2 + 65535;
constexpr size_t kPiece = size_t{128} << 10;

class OrblogParserLong : public OrblogParser {
 protected:
  static std::string textOf(size_t number, size_t size) {
    std::string text = std::to_string(number) + " ";
    text.resize(size, 'x');
    return text;
  }
  // Records of one size, with short ones between them.
  Bytes fileOf(size_t size, size_t count) {
    Bytes file = headerOf(keyOf(1));
    all.clear();
    for (size_t i = 0; i < count; ++i) {
      all.push_back(textOf(i, i % 7 == 3 ? 40 : size));
      starts.push_back(file.size());
      file += sealer.record(all.back());
    }
    return file;
  }
  // Like reading a complete file.
  void parseWhole(const Bytes& bytes, size_t piece) {
    LogParser parser(ring, opener());
    for (size_t at = 0; at < bytes.size(); at += piece)
      parser.feed({bytes.data() + at, std::min(piece, bytes.size() - at)}, out,
                  bytes.size() - at > piece);
    parser.finish(out);
  }
  // The same, but waiting bytes are passed again, in pieces that are larger than a record. Returns
  // the number of pieces.
  size_t parseReadingAnew(const Bytes& bytes) {
    LogParser parser(ring, opener());
    size_t pieces = 0;
    for (bool more = true; more; ++pieces) {
      const size_t at = parser.restart();
      more = bytes.size() - at >= kPiece;
      parser.feed({bytes.data() + at, std::min(kPiece, bytes.size() - at)}, out, more);
    }
    parser.finish(out);
    return pieces;
  }
  void expectTexts(const Texts& expected, size_t piece) {
    EXPECT_EQ(out.records.size(), expected.size()) << piece;
    EXPECT_TRUE(texts() == expected) << piece;  // too large to print
  }

  Texts all;
  std::vector<size_t> starts;
};

TEST_F(OrblogParserLong, AllAreReadInAnyPieces) {
  for (const size_t size : {size_t{512}, size_t{2000}, size_t{30000}, kLongest}) {
    const Bytes file = fileOf(size, slow() ? 10 : 40);
    for (const size_t piece : {size_t{1}, size_t{541}, size_t{4099}, size_t{65536}, kLargestRecord,
                               kPiece + 13, file.size()}) {
      out = {};
      parseWhole(file, piece);
      expectTexts(all, piece);
      EXPECT_EQ(findings(), Texts()) << size << " in " << piece;
    }
  }
}

TEST_F(OrblogParserLong, DamageCostsOneRecordInAnyPieces) {
  for (const size_t size : {size_t{512}, size_t{2000}, size_t{30000}, kLongest}) {
    starts.clear();
    Bytes file = fileOf(size, 20);
    const size_t damaged = 9;
    file[starts[damaged] + size - 5] ^= 1;
    all.erase(all.begin() + damaged);
    const std::string finding = "offset " + std::to_string(starts[damaged]) + ": a record of " +
                                std::to_string(size + 30) +
                                " bytes fails authentication; readable again at offset " +
                                std::to_string(starts[damaged + 1]);
    for (const size_t piece : {size_t{1}, size_t{541}, size_t{65536}, kPiece + 13, file.size()}) {
      out = {};
      parseWhole(file, piece);
      expectTexts(all, piece);
      EXPECT_EQ(findings(), Texts{finding}) << size << " in " << piece;
    }
  }
}

TEST_F(OrblogParserLong, TheyAreReadAlsoWhenTheFileEndsWithinThemForNow) {
  for (const size_t size : {size_t{512}, size_t{2000}, size_t{30000}, kLongest}) {
    const Bytes file = fileOf(size, 12);
    for (const size_t piece : {size_t{541}, size_t{20011}, kLargestRecord}) {
      out = {};
      parse(file, piece);
      expectTexts(all, piece);
      EXPECT_EQ(findings(), Texts()) << size << " in " << piece;
    }
  }
}

TEST_F(OrblogParserLong, GoodRecordsBehindAWrongLengthComeAtThePresentEnd) {
  for (const size_t fed : {size_t{1}, size_t{2}, size_t{30}}) {
    Bytes file = headerOf(keyOf(1));
    file += Bytes{0xFF, 0xFF};
    file += sealer.record("good");
    out = {};
    LogParser parser(ring, opener());
    const size_t half = 512 + fed;
    parser.feed({file.data(), half}, out, true);
    EXPECT_EQ(texts(), Texts());
    parser.feed({file.data() + half, file.size() - half}, out);
    EXPECT_EQ(texts(), Texts{"good"});
    EXPECT_EQ(findings(), Texts{"offset 512: record length 65535 cannot be right (2 bytes); "
                                "readable again at offset 514"});
  }
}

TEST_F(OrblogParserLong, HalfOfOneThatWasTakenBackIsForgotten) {
  Bytes file = headerOf(keyOf(1));
  file += sealer.record(first);
  const size_t start = file.size();
  file += sealer.record(textOf(0, 2000));
  LogParser parser(ring, opener());
  parser.feed({file.data(), file.size() - 1}, out);
  EXPECT_TRUE(parser.goBack(start));
  EXPECT_EQ(parser.restart(), start);
  const Bytes anew = sealer.record("anew");
  parser.feed({anew.data(), anew.size()}, out);
  parser.finish(out);
  EXPECT_EQ(texts(), (Texts{first, "anew"}));
  EXPECT_TRUE(findings().empty());
}

TEST_F(OrblogParserLong, FileWithoutHeaderMayBeginWithOne) {
  addKey(keyOf(1), "another file");
  Bytes file = sealer.record(textOf(0, 30000));
  file += sealer.record(first);
  for (const size_t piece : {size_t{600}, size_t{29999}, file.size()}) {
    out = {};
    parseWhole(file, piece);
    expectTexts({textOf(0, 30000), first}, piece);
  }
}

// Every piece advances by more than a record can wait for.
TEST_F(OrblogParserLong, WhateverTheLengthsSayPiecesAreReadAnewOnlyOnce) {
  const size_t kSize = fewerIf(slow(), size_t{4} << 20);
  const size_t most = kSize / (kPiece - kLargestRecord) + 3;
  for (const uint8_t byte : {uint8_t{0xFF}, uint8_t{0x80}, uint8_t{0x01}, uint8_t{0x00}}) {
    Bytes file = headerOf(keyOf(1));
    file += sealer.record(first);
    file += Bytes(kSize, byte);
    out = {};
    EXPECT_LE(parseReadingAnew(file), most);
    EXPECT_EQ(texts(), Texts{first});
    EXPECT_TRUE(hasProblem());
  }
  const Bytes file = fileOf(kLongest, fewerIf(slow(), size_t{64}));
  out = {};
  EXPECT_LE(parseReadingAnew(file), most);
  expectTexts(all, kPiece);
}

TEST_F(OrblogParserLong, HugeLengthsInSmallPiecesEnd) {
  Bytes file = headerOf(keyOf(1));
  const size_t kCount = fewerIf(slow(), 10000u);
  for (size_t i = 0; i < kCount; ++i) {
    file += Bytes{0xFF, 0xFF};
    file += sealer.record("good");
  }
  parseWhole(file, 1000);
  EXPECT_EQ(out.records.size(), kCount);
}

}  // namespace
