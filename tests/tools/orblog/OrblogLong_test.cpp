// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
// Records that are longer than those of the library: the format allows them, so they must be read
// like others, at any split of the input.
#include <gtest/gtest.h>

#include <algorithm>
#include <tuple>

#include "OrblogFiles.h"
#include "OrblogRun.h"
#include "Rounds.h"

using namespace orblogtest;

namespace {

constexpr size_t kLongest = 65535 - 28;

// A text of this size with its number.
std::string textOf(size_t number, size_t size) {
  std::string text = "text " + std::to_string(number) + " ";
  text.resize(size, 'x');
  return text;
}

// The size and the number of the texts.
class OrblogLong : public testing::TestWithParam<std::tuple<size_t, size_t>> {
 protected:
  OrblogLong() {
    Sealer sealer(keyOf(1));
    Bytes bytes = keyPair().header(keyOf(1));
    bytes.reserve(bytes.size() + count * stride());
    for (size_t i = 0; i < count; ++i) bytes += sealer.record(textOf(i, size));
    writeFile(file, bytes);
  }
  size_t stride() const { return size + 30; }
  std::string expected(size_t without = SIZE_MAX) const {
    std::string all;
    for (size_t i = 0; i < count; ++i) {
      if (i != without) all += textOf(i, size) + "\n";
    }
    return all;
  }
  // Changes a byte of this record.
  void damage(size_t number, size_t byte) {
    Bytes bytes = readFile(file);
    bytes[512 + number * stride() + byte] ^= 1;
    writeFile(file, bytes);
  }
  std::string fault(size_t number) const {
    const size_t offset = 512 + number * stride();
    return "orblog: " + file.string() + ": offset " + std::to_string(offset) + ": a record of " +
           std::to_string(stride()) + " bytes fails authentication; readable again at offset " +
           std::to_string(offset + stride()) + "\n";
  }
  Result decrypt() const {
    return runOrblog({"decrypt", "--key", keyPair().path(), file.string()});
  }
  // Too large to print.
  static void expectOut(const Result& result, const std::string& out) {
    EXPECT_EQ(std::count(result.out.begin(), result.out.end(), '\n'),
              std::count(out.begin(), out.end(), '\n'));
    EXPECT_TRUE(result.out == out);
  }

  const size_t size = std::get<0>(GetParam()), count = std::get<1>(GetParam());
  TemporaryDirectory logs;
  const fs::path file = logs / "orb_log_p0_00";
};

TEST_P(OrblogLong, AllRecordsArePrinted) {
  const Result result = decrypt();
  expectOut(result, expected());
  EXPECT_EQ(result.err, "");
  EXPECT_EQ(result.status, 0);
}

TEST_P(OrblogLong, DamagedRecordCostsItselfOnly) {
  const size_t number = count / 2;
  damage(number, stride() / 2);
  const Result result = decrypt();
  expectOut(result, expected(number));
  EXPECT_EQ(result.err, fault(number));
  EXPECT_EQ(result.status, 1);
}

TEST_P(OrblogLong, InfoCountsThemAll) {
  const Result result = runOrblog({"info", "--key", keyPair().path(), file.string()});
  const std::string number = std::to_string(count);
  EXPECT_NE(result.out.find("  records:  " + number + " by their lengths\n"), std::string::npos)
      << result.out;
  EXPECT_NE(result.out.find("  readable: " + number + " records\n"), std::string::npos)
      << result.out;
  EXPECT_EQ(result.err, "");
  EXPECT_EQ(result.status, 0);
}

INSTANTIATE_TEST_SUITE_P(Sizes, OrblogLong,
                         testing::Values(std::make_tuple(512, 1000), std::make_tuple(2000, 1000),
                                         std::make_tuple(30000, slow() ? 75 : 300),
                                         std::make_tuple(kLongest, slow() ? 40 : 150)));

class OrblogLongFollow : public testing::Test {
 protected:
  OrblogLongFollow() {
    Bytes bytes = keyPair().header(keyOf(1));
    bytes += sealer.record("first");
    writeFile(file, bytes);
  }
  std::vector<std::string> arguments() const {
    return {"decrypt", "--follow", "--key", keyPair().path(), logs.string()};
  }
  // Shows that the reader has read the contents of the file.
  void addElsewhere(Orblog& program, const std::string& text) {
    const fs::path elsewhere = logs / "orb_log_p0_01";
    if (!fs::exists(elsewhere)) writeFile(elsewhere, keyPair().header(keyOf(1)));
    appendFile(elsewhere, sealer.record(text));
    ASSERT_TRUE(program.waitForOut(text + "\n"));
  }
  void end(Orblog& program) {
    program.signal(SIGINT);
    EXPECT_EQ(program.wait(), 0);
  }

  TemporaryDirectory logs;
  Sealer sealer{keyOf(1)};
  const fs::path file = logs / "orb_log_p0_00";
};

TEST_F(OrblogLongFollow, HalfOfOneIsWaitedFor) {
  Orblog program(arguments());
  ASSERT_TRUE(program.waitForOut("first\n"));
  const std::string text = textOf(1, 30000);
  const Bytes record = sealer.record(text);
  appendFile(file, Bytes(record.begin(), record.begin() + 10000));
  addElsewhere(program, "half was seen");
  appendFile(file, Bytes(record.begin() + 10000, record.begin() + 20000));
  addElsewhere(program, "more was seen");
  appendFile(file, Bytes(record.begin() + 20000, record.end()));
  ASSERT_TRUE(program.waitForOut(text + "\n"));
  end(program);
  EXPECT_EQ(program.out(), "first\nhalf was seen\nmore was seen\n" + text + "\n");
  EXPECT_EQ(program.err(), "");
}

TEST_F(OrblogLongFollow, LengthThatLeadsNowhereDoesNotHoldUpGoodRecords) {
  Orblog program(arguments());
  ASSERT_TRUE(program.waitForOut("first\n"));
  const std::string offset = std::to_string(fs::file_size(file));
  appendFile(file, {0xFF, 0xFF});
  addElsewhere(program, "length was seen");
  const std::string place = std::to_string(fs::file_size(file));
  appendFile(file, sealer.record("good"));
  ASSERT_TRUE(program.waitForOut("good\n"));
  end(program);
  EXPECT_EQ(program.out(), "first\nlength was seen\ngood\n");
  EXPECT_EQ(program.err(), "orblog: " + file.string() + ": offset " + offset +
                               ": record length 65535 cannot be right (2 bytes); readable again "
                               "at offset " +
                               place + "\n");
}

}  // namespace
