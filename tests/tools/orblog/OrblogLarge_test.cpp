// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
// Time and memory must not depend on the amount of data, on the number of files, or on manipulated
// files.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>

#include "OrblogFiles.h"
#include "OrblogRun.h"
#include "Rounds.h"

using namespace orblogtest;

namespace {

class OrblogLarge : public testing::Test {
 protected:
  OrblogLarge() {
    // AddressSanitizer must not keep freed memory, because that memory would be measured.
    const char* const options = std::getenv("ASAN_OPTIONS");
    const std::string all = (options == nullptr ? "" : std::string(options) + ":");
    setenv("ASAN_OPTIONS",
           (all + "quarantine_size_mb=1:thread_local_quarantine_size_kb=64").c_str(), 1);
  }
  static std::string timeOf(int ms) {
    char time[40];
    std::snprintf(time, sizeof time, "%02d:%02d:%02d.%03d", ms / 3600000, ms / 60000 % 60,
                  ms / 1000 % 60, ms % 1000);
    return time;
  }
  // A line with the maximum length of the library.
  static std::string lineOf(int ms) {
    std::string text = "line " + std::to_string(ms) + " ";
    text.resize(460, 'x');
    return lineAt(timeOf(ms), text);
  }
  // Lines of these milliseconds, every `step`th. Written in pieces, because the peak memory of this
  // program is also counted for programs that it starts.
  void write(const std::string& name, int from, int to, int step = 1) {
    Sealer sealer(keyOf(1), static_cast<uint8_t>(from));
    writeFile(logs / name, header);
    Bytes piece;
    for (int ms = from; ms < to; ms += step) {
      piece += sealer.record(lineOf(ms));
      if (piece.size() < 100000) continue;
      appendFile(logs / name, piece);
      piece.clear();
    }
    appendFile(logs / name, piece);
  }
  // Whether the text has all lines from 0 in order.
  static size_t countLines(const std::string& out) {
    size_t at = 0;
    int ms = 0;
    for (; at < out.size(); ++ms) {
      const std::string line = lineOf(ms) + "\n";
      if (out.compare(at, line.size(), line) != 0) break;
      at += line.size();
    }
    EXPECT_EQ(at, out.size());
    return static_cast<size_t>(ms);
  }
  // Runs the program and drops its output, because this program would have to store it.
  static long peakKb(std::vector<std::string> arguments) {
    arguments.insert(arguments.end(), {"--since", "2026-01-01"});
    Orblog program(arguments);
    EXPECT_EQ(program.wait(), 0) << program.err();
    EXPECT_EQ(program.out(), "");
    return program.peakKb();
  }
  std::vector<std::string> decrypt(const std::string& what = "") const {
    return {"decrypt", "--key", keyPair().path(), (logs.path() / what).string()};
  }

  TemporaryDirectory logs;
  const Bytes header = keyPair().header(keyOf(1));
};

// 20 MB in memory would be clearly visible, and so would the 4 MB of a slow run.
constexpr long kAllowedKb = 3000;

// Lines of more than 500 bytes.
const int kShort = slow() ? 500 : 4000;
const int kLong = slow() ? 9000 : 46000;

TEST_F(OrblogLarge, MemoryDoesNotGrowWithAFile) {
  write("orb_log_p0_00", 0, kShort);
  write("orb_log_p0_01", 0, kLong);
  EXPECT_GT(fs::file_size(logs / "orb_log_p0_01"), static_cast<size_t>(kLong) * 500);
  EXPECT_GT((kLong - kShort) / 2, kAllowedKb);
  for (const std::string command : {"decrypt", "info"}) {
    const auto peak = [&](const std::string& name) {
      std::vector<std::string> arguments = decrypt(name);
      arguments[0] = command;
      if (command == "decrypt") return peakKb(arguments);
      Orblog program(arguments);
      EXPECT_EQ(program.wait(), 0) << program.err();
      return program.peakKb();
    };
    const long little = peak("orb_log_p0_00"), much = peak("orb_log_p0_01");
    EXPECT_LT(much, little + kAllowedKb) << command << " " << little;
  }
}

TEST_F(OrblogLarge, MemoryDoesNotGrowWithFilesThatAreMerged) {
  fs::create_directories(logs / "little");
  fs::create_directories(logs / "much");
  const int kLines = slow() ? 20000 : 40000;
  for (int i = 0; i < 8; ++i) {
    const std::string name = "orb_log_p0_" + std::to_string(i);
    write("little/" + name, i, kLines, 64);
    write("much/" + name, i, kLines, 8);
  }
  const long little = peakKb(decrypt("little")), much = peakKb(decrypt("much"));
  EXPECT_LT(much, little + kAllowedKb + 8 * 512) << little;
  EXPECT_EQ(countLines(runOrblog(decrypt("much")).out), static_cast<size_t>(kLines));
}

TEST_F(OrblogLarge, MemoryDoesNotGrowWithFaults) {
  const int kCounts[] = {2000, slow() ? 60000 : 200000};
  for (const int count : kCounts) {
    Sealer good(keyOf(1)), bad(keyOf(2));
    Bytes bytes = header;
    const fs::path file = logs / ("orb_log_p0_" + std::to_string(count));
    writeFile(file, bytes);
    for (int i = 0; i < count; i += 1000) {
      bytes.clear();
      for (int j = i; j < i + 1000; ++j) {
        bytes += good.record(j % 2 == 0 ? "" : "x");
        bytes += bad.record("");
      }
      appendFile(file, bytes);
    }
  }
  long peak[2];
  for (const int i : {0, 1}) {
    Orblog program(decrypt("orb_log_p0_" + std::to_string(kCounts[i])));
    EXPECT_EQ(program.wait(), 1);
    const std::string count = std::to_string(kCounts[i] - 20);
    EXPECT_NE(program.err().find("and " + count + " more places like these"), std::string::npos);
    peak[i] = program.peakKb();
  }
  EXPECT_LT(peak[1], peak[0] + kAllowedKb);
}

// An unsuccessful attempt at a long record must not change the text of the short record after it.
TEST_F(OrblogLarge, MemoryDoesNotGrowWithHugeLengths) {
  const auto peakOf = [this](const Bytes& length) {
    Sealer sealer(keyOf(1));
    Bytes bytes = header;
    while (bytes.size() < (slow() ? 100000u : 300000u)) {
      bytes += length;
      bytes += sealer.record("");
    }
    writeFile(logs / "orb_log_p0_00", bytes);
    Orblog program(decrypt());
    EXPECT_EQ(program.wait(), 1);
    return program.peakKb();
  };
  const long little = peakOf({0x00, 0x00}), much = peakOf({0xFF, 0xFF});
  EXPECT_LT(much, little + kAllowedKb);
}

TEST_F(OrblogLarge, MemoryDoesNotGrowWithAFileWhateverIsAskedOfIt) {
  write("orb_log_p0_00", 0, kShort);
  write("orb_log_p0_01", 0, kLong);
  const std::vector<std::vector<std::string>> kWishes = {
      {"--json"}, {"--grep", "line [0-9]+5 "}, {"-n", "10"}, {"--color", "always"}, {"-"}};
  for (const std::vector<std::string>& wish : kWishes) {
    const auto peak = [&](const std::string& name) {
      Start start;
      start.output = "/dev/null";
      std::vector<std::string> arguments = decrypt(name);
      if (wish[0] == "-") {
        start.input = arguments.back();
        arguments.pop_back();
      }
      arguments.insert(arguments.end(), wish.begin(), wish.end());
      Orblog program(arguments, start);
      EXPECT_EQ(program.wait(), 0) << program.err();
      return program.peakKb();
    };
    const long little = peak("orb_log_p0_00");
    EXPECT_LT(peak("orb_log_p0_01"), little + kAllowedKb) << wish[0];
  }
}

TEST_F(OrblogLarge, ManyFilesAreReadWithFewDescriptors) {
  const int kFiles = slow() ? 250 : 1000, kLines = 50 * kFiles;
  // Later files have lines between those of the earlier ones, and each has more lines than are kept
  // in memory.
  for (int i = 0; i < kFiles; ++i) write("orb_log_p0_" + std::to_string(i), i, kLines, kFiles);
  for (const int descriptors : {13, 1}) {
    const Result result = runOrblog(decrypt(), descriptors);
    EXPECT_EQ(countLines(result.out), static_cast<size_t>(kLines));
    EXPECT_EQ(result.err, "");
    EXPECT_EQ(result.status, 0);
  }
  // One parser with a buffer per file would be visible.
  const long few = peakKb(decrypt("orb_log_p0_7")), many = peakKb(decrypt());
  EXPECT_LT(many, few + kAllowedKb + (20 << 10)) << few;
  const Result info = runOrblog({"info", "--key", keyPair().path(), logs.string()}, 13);
  size_t files = 0;
  const std::string readable = "  readable: 50 records\n";
  for (size_t at = 0; (at = info.out.find(readable, at)) != std::string::npos; ++at) ++files;
  EXPECT_EQ(files, static_cast<size_t>(kFiles));
  EXPECT_EQ(info.err, "");
}

// A hole takes no time, even if it is very large.
TEST_F(OrblogLarge, HolesArePassedOver) {
  write("orb_log_p0_00", 0, 10);
  const fs::path file = logs / "orb_log_p0_00";
  const uint64_t start = fs::file_size(file), end = uint64_t{1} << 42;
  std::error_code failure;
  fs::resize_file(file, end, failure);
  ASSERT_FALSE(failure) << failure.message();
  Sealer sealer(keyOf(1), 1);
  appendFile(file, sealer.record(lineOf(10)));
  const Result result = runOrblog(decrypt());
  EXPECT_EQ(countLines(result.out), 11u);
  EXPECT_EQ(result.err, "orblog: " + file.string() + ": offset " + std::to_string(start) +
                            ": record length 0 cannot be right (" + std::to_string(end - start) +
                            " bytes); readable again at offset " + std::to_string(end) + "\n");
  EXPECT_EQ(result.status, 1);
  fs::remove(file);
  writeFile(file, {});
  fs::resize_file(file, end);
  EXPECT_NE(runOrblog(decrypt()).err.find("the header is all zeros"), std::string::npos);
  EXPECT_EQ(runOrblog({"info", "--key", keyPair().path(), logs.string()}).status, 1);
}

// Each place of such a file may be a record, with thirty keys to try. The size of the file limits
// the search.
TEST_F(OrblogLarge, SmallFilesCannotMakeItSearchForLong) {
  for (int i = 0; i < 30; ++i) {
    Bytes bytes = keyPair().header(keyOf(static_cast<uint8_t>(i + 1)));
    bytes += Bytes(16000, 0x01);
    writeFile(logs / ("orb_log_p0_" + std::to_string(i)), bytes);
  }
  const Result result = runOrblog(decrypt());
  EXPECT_EQ(result.out, "");
  const std::string end = "; the search for readable records was given up\n";
  size_t given = 0;
  for (size_t at = 0; (at = result.err.find(end, at)) != std::string::npos; ++at) ++given;
  EXPECT_EQ(given, 30u) << result.err;
}

TEST_F(OrblogLarge, SmallFilesThatAreDamagedAreSearched) {
  for (int i = 0; i < 30; ++i) {
    Sealer sealer(keyOf(static_cast<uint8_t>(i + 1)));
    Bytes bytes = keyPair().header(keyOf(static_cast<uint8_t>(i + 1)));
    for (int j = 0; j < 3; ++j) {
      bytes += sealer.record(lineOf(3 * i + j));
      bytes += {0xFF, 0x00, 0x11};
    }
    writeFile(logs / ("orb_log_p0_" + std::to_string(i)), bytes);
  }
  EXPECT_EQ(countLines(runOrblog(decrypt()).out), 90u);
}

}  // namespace
