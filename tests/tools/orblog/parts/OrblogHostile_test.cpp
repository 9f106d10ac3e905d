// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "OrblogParserFixture.h"
#include "Rounds.h"

using namespace orblogtest;

namespace {

// The same numbers in every run.
class Numbers {
 public:
  explicit Numbers(uint32_t seed) : mState(seed) {}
  size_t below(size_t limit) {
    mState = mState * 1664525u + 1013904223u;
    return (mState >> 8) % limit;
  }

 private:
  uint32_t mState;
};

class OrblogDamage : public OrblogParser {
 protected:
  // The texts of these tests are a number and a series of x.
  static std::vector<int> numbersOf(const Texts& texts) {
    std::vector<int> all;
    for (const std::string& text : texts) all.push_back(std::atoi(text.c_str()));
    return all;
  }
  void parseInRandomPieces(const Bytes& bytes, Numbers& numbers) {
    LogParser parser(ring, opener());
    for (size_t at = 0; at < bytes.size();) {
      const size_t piece = std::min(bytes.size() - at, 1 + numbers.below(2000));
      parser.feed({bytes.data() + at, piece}, out);
      at += piece;
    }
    parser.finish(out);
  }
};

TEST_F(OrblogDamage, EveryRecordWithoutDamageIsReadAndNoOther) {
  const size_t kRecords = 40;
  for (uint32_t seed = 0; seed < fewerIf(emulated(), 300u); ++seed) {
    Numbers numbers(seed);
    Bytes file = headerOf(keyOf(1));
    std::vector<size_t> starts;
    Texts whole;
    for (size_t i = 0; i < kRecords; ++i) {
      starts.push_back(file.size());
      whole.push_back(std::to_string(i) + std::string(numbers.below(500), 'x'));
      file += sealer.record(whole.back());
    }
    starts.push_back(file.size());
    std::vector<bool> damaged(kRecords);
    for (size_t i = 0; i <= seed % 12; ++i) {
      const size_t at = 512 + numbers.below(file.size() - 512);
      file[at] = static_cast<uint8_t>(file[at] + 1 + numbers.below(255));
      const auto next = std::upper_bound(starts.begin(), starts.end(), at);
      damaged[static_cast<size_t>(next - starts.begin()) - 1] = true;
    }
    Texts expected;
    for (size_t i = 0; i < kRecords; ++i) {
      if (!damaged[i]) expected.push_back(whole[i]);
    }
    out = {};
    parseInRandomPieces(file, numbers);
    ASSERT_EQ(numbersOf(texts()), numbersOf(expected)) << seed;
    EXPECT_TRUE(hasProblem());
  }
}

TEST_F(OrblogDamage, LostAndForeignStretchesCostOnlyTheRecordsTheyTouch) {
  for (uint32_t seed = 0; seed < fewerIf(emulated(), 300u); ++seed) {
    Numbers numbers(seed);
    Bytes file = headerOf(keyOf(1));
    Texts expected;
    for (size_t i = 0; i < 20; ++i) {
      const std::string text = std::to_string(i) + std::string(numbers.below(500), 'x');
      Bytes record = sealer.record(text);
      const size_t at = numbers.below(record.size());
      switch (numbers.below(6)) {
        case 0:  // a piece is missing
          record.erase(record.begin() + static_cast<std::ptrdiff_t>(at));
          break;
        case 1:  // something comes before
          for (size_t count = numbers.below(40); count > 0; --count)
            file.push_back(static_cast<uint8_t>(numbers.below(256)));
          expected.push_back(text);
          break;
        default:
          expected.push_back(text);
      }
      file += record;
    }
    out = {};
    parseInRandomPieces(file, numbers);
    ASSERT_EQ(numbersOf(texts()), numbersOf(expected)) << seed;
  }
}

// Also with damaged lengths that the library never writes.
TEST_F(OrblogDamage, WhereAPieceEndsMakesNoDifferenceWhileThereIsMore) {
  size_t read = 0;
  for (uint32_t seed = 0; seed < fewerIf(emulated(), 200u); ++seed) {
    Numbers numbers(seed);
    Bytes file = headerOf(keyOf(1));
    for (size_t i = 0; i < 25; ++i) {
      const size_t size = numbers.below(numbers.below(4) == 0 ? 9000 : 500);
      file += (numbers.below(20) == 0 ? other : sealer).record(std::string(size, 'x'));
    }
    for (size_t i = seed % 12; i > 0; --i) {
      const size_t at = numbers.below(file.size());
      file[at] = static_cast<uint8_t>(file[at] + 1 + numbers.below(255));
    }
    if (seed % 3 == 0) file.resize(file.size() - numbers.below(400));
    ring = KeyRing();
    addKey(keyOf(1), "another file");
    const auto parsePieces = [&](size_t most) {
      LogParser parser(ring, opener());
      for (size_t at = 0, piece = 0; at < file.size(); at += piece) {
        piece = std::min(file.size() - at, most - numbers.below(most / 2 + 1));
        parser.feed({file.data() + at, piece}, out, true);
      }
      parser.finish(out);
    };
    out = {};
    parsePieces(file.size() * 2);
    const Texts whole = texts(), faults = findings();
    read += whole.size();
    for (const size_t most : {size_t{30}, size_t{700}, size_t{6000}}) {
      out = {};
      parsePieces(most);
      EXPECT_TRUE(texts() == whole) << seed << " " << most;
      EXPECT_EQ(findings(), faults) << seed << " " << most;
    }
  }
  EXPECT_GT(read, fewerIf(emulated(), 3000u));
}

// Hostile bytes of one megabyte. The time limit of the test would detect an endless search.
class OrblogHostileBytes : public OrblogParser {
 protected:
  void parseBehindHeader(const Bytes& bytes) {
    addKey(keyOf(2), "another file");
    addKey(keyOf(3), "a third file");
    Bytes file = headerOf(keyOf(1));
    file += sealer.record(first);
    file += bytes;
    parse(file);
    EXPECT_EQ(texts(), Texts{first});
    EXPECT_TRUE(hasProblem());
    out = {};
    parse(bytes);
    EXPECT_TRUE(out.records.empty());
    EXPECT_TRUE(hasProblem());
  }
  const size_t kSize = fewerIf(emulated(), size_t{1} << 20);
};

TEST_F(OrblogHostileBytes, RandomBytesEnd) {
  Bytes bytes(kSize);
  uint32_t state = 1;
  for (uint8_t& byte : bytes) {
    state = state * 1664525u + 1013904223u;
    byte = static_cast<uint8_t>(state >> 24);
  }
  parseBehindHeader(bytes);
}

TEST_F(OrblogHostileBytes, AllOnesEnd) { parseBehindHeader(Bytes(kSize, 0xFF)); }

TEST_F(OrblogHostileBytes, LengthsOfZeroEnd) { parseBehindHeader(Bytes(kSize, 0)); }

TEST_F(OrblogHostileBytes, APlausibleLengthAtEveryByteEnds) {
  parseBehindHeader(Bytes(kSize, 0x01));
}

TEST_F(OrblogHostileBytes, LengthsOfTheLeastEnd) {
  Bytes bytes(kSize);
  for (size_t i = 0; i < kSize; i += 2) bytes[i] = 28;
  parseBehindHeader(bytes);
}

TEST_F(OrblogHostileBytes, GoodRecordsBetweenHugeLengthsAreReadAndEnd) {
  Bytes file = headerOf(keyOf(1));
  const size_t kCount = fewerIf(emulated(), 10000u);
  for (size_t i = 0; i < kCount; ++i) {
    file += Bytes{0xFF, 0xFF};
    file += sealer.record("good");
  }
  parse(file);
  EXPECT_EQ(out.records.size(), kCount);
}

}  // namespace
