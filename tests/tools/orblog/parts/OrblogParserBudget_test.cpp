// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
// The limit of a search: attempts use the budget, and reading continues without it.
#include "OrblogParserFixture.h"

using namespace orblogtest;

namespace {

TEST_F(OrblogParser, WithoutSearchBudgetTheLengthsAreFollowed) {
  Bytes file = threeRecords();
  file[700] ^= 1;
  LogParser parser(ring, opener());
  parser.setSearchBudget(0);
  parser.feed({file.data(), file.size()}, out);
  parser.finish(out);
  EXPECT_EQ(texts(), (Texts{first, third}));
}

TEST_F(OrblogParser, WithoutSearchBudgetALengthThatCannotBeEndsTheReading) {
  Bytes file = threeRecords();
  file[642] = 1;
  LogParser parser(ring, opener());
  parser.setSearchBudget(0);
  parser.feed({file.data(), file.size()}, out);
  parser.finish(out);
  EXPECT_EQ(texts(), Texts{first});
  EXPECT_EQ(findings(), Texts{"offset 642: record length 1 cannot be right (560 bytes); the search "
                              "for readable records was given up"});
}

TEST_F(OrblogParser, TrialsOfKeysThatDoNotFitAreChargedToTheBudget) {
  Bytes file = headerOf(keyOf(1));
  Texts all;
  for (uint8_t key = 1; key <= 4; ++key) addKey(keyOf(key), "another file");
  Sealer sealers[] = {Sealer(keyOf(1), 1), Sealer(keyOf(2), 2), Sealer(keyOf(3), 3),
                      Sealer(keyOf(4), 4)};
  for (size_t i = 0; i < 400; ++i) {
    all.push_back(std::to_string(i));
    file += sealers[i % 4].record(all.back());
  }
  parse(file);
  EXPECT_EQ(texts(), all);
  EXPECT_TRUE(findings().empty());

  out = {};
  LogParser parser(ring, opener());
  parser.setSearchBudget(10000);
  parser.feed({file.data(), file.size()}, out);
  parser.finish(out);
  EXPECT_GT(out.records.size(), 10u);
  EXPECT_LT(out.records.size(), 300u);
  EXPECT_TRUE(hasProblem());
}

TEST_F(OrblogParser, WithoutSearchBudgetTwoWritersInAFileAreRead) {
  for (uint8_t key = 3; key <= 9; ++key) addKey(keyOf(key), "another file");
  addKey(keyOf(2), "another file");
  Bytes file = headerOf(keyOf(1));
  Texts all;
  for (size_t i = 0; i < 100; ++i) {
    all.push_back(std::to_string(i));
    file += (i % 2 == 0 ? sealer : other).record(all.back());
  }
  LogParser parser(ring, opener());
  parser.setSearchBudget(3000);  // enough to find the second writer's key, once
  parser.feed({file.data(), file.size()}, out);
  parser.finish(out);
  EXPECT_EQ(texts(), all);
  EXPECT_TRUE(findings().empty());
}

}  // namespace
