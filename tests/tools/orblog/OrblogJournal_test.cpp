// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
// Typical uses of orblog decrypt: selections, inputs and output formats.
#include <gtest/gtest.h>

#include <cstdlib>

#include "OrblogFiles.h"
#include "OrblogRun.h"

using namespace orblogtest;

namespace {

// An environment variable for programs that are started during its lifetime.
class Environment {
 public:
  Environment(const char* name, const char* value) : mName(name) { setenv(name, value, 1); }
  Environment(const Environment&) = delete;
  Environment& operator=(const Environment&) = delete;
  ~Environment() { unsetenv(mName); }

 private:
  const char* const mName;
};

class OrblogJournal : public testing::Test {
 protected:
  std::string path(const std::string& name) const { return (logs / name).string(); }
  Bytes bytesOf(const std::vector<std::string>& lines) {
    Bytes bytes = header();
    for (const std::string& line : lines) bytes += sealer.record(line);
    return bytes;
  }
  std::string write(const std::string& name, const std::vector<std::string>& lines) {
    writeFile(logs / name, bytesOf(lines));
    return path(name);
  }
  static const Bytes& header() {
    static const Bytes kHeader = keyPair().header(keyOf(1));
    return kHeader;
  }
  static Result decrypt(std::vector<std::string> arguments, const Start& start = {}) {
    arguments.insert(arguments.begin(), {"decrypt", "--key", keyPair().path()});
    return runOrblog(arguments, start);
  }
  static Start inputFrom(const std::string& file) {
    Start start;
    start.input = file;
    return start;
  }
  static void expectOut(const Result& result, const std::string& out) {
    EXPECT_EQ(result.out, out);
    EXPECT_EQ(result.err, "");
    EXPECT_EQ(result.status, 0);
  }
  static void expectRefused(const Result& result, const std::string& reason) {
    EXPECT_EQ(result.err, "orblog decrypt: " + reason + "; try 'orblog decrypt --help'\n");
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(result.status, 2);
  }

  TemporaryDirectory logs;
  Sealer sealer{keyOf(1)};
  const std::string one = lineAt("10:00:01.000", "|ORB|Log::init:1 Alpha", 'D'),
                    two = "2025-05-24 10:00:02.000   777   778 W DMAP : beta",
                    three = lineAt("10:00:03.000", "gamma", 'E');
};

TEST_F(OrblogJournal, StandardInputIsReadInItsPlaceAmongFiles) {
  const std::string input = write("input", {one, three});
  expectOut(decrypt({"-"}, inputFrom(input)), one + "\n" + three + "\n");
  const std::string file = write("orb_log_p0_00", {two});
  expectOut(decrypt({file, "-"}, inputFrom(input)), one + "\n" + two + "\n" + three + "\n");
}

TEST_F(OrblogJournal, StandardInputGivesItsKeyToOtherFiles) {
  const std::string input = write("input", {one});
  writeFile(logs / "orb_log_p0_00", Sealer(keyOf(1), 1).record(two));
  const Result result = decrypt({path("orb_log_p0_00"), "-"}, inputFrom(input));
  EXPECT_EQ(result.out, one + "\n" + two + "\n");
  EXPECT_EQ(result.err, "orblog: " + path("orb_log_p0_00") +
                            ": offset 0: no header, the file was removed while it was written and "
                            "made anew; read with the session key of standard input\n");
}

TEST_F(OrblogJournal, LinesOfAPipeArePrintedAsTheyCome) {
  std::array<int, 2> input = {};
  ASSERT_EQ(pipe2(input.data(), O_CLOEXEC), 0);
  Start start;
  start.inputPipe = input[0];
  Orblog program({"decrypt", "--key", keyPair().path(), "-"}, start);
  close(input[0]);
  const auto send = [&](const Bytes& bytes) {
    ASSERT_EQ(::write(input[1], bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
  };
  send(bytesOf({one}));
  ASSERT_TRUE(program.waitForOut(one + "\n"));
  const Bytes record = sealer.record(two);
  send(Bytes(record.begin(), record.begin() + 9));
  send(Bytes(record.begin() + 9, record.end()));
  ASSERT_TRUE(program.waitForOut(two + "\n"));
  close(input[1]);
  EXPECT_EQ(program.wait(), 0);
  EXPECT_EQ(program.err(), "");
}

TEST_F(OrblogJournal, FaultsOfStandardInputHaveTheirOffsets) {
  Bytes bytes = bytesOf({one, two, three});
  const size_t offset = 512 + 30 + one.size();
  bytes[offset + 40] ^= 1;
  bytes.resize(bytes.size() - 1);
  writeFile(logs / "input", bytes);
  const Result result = decrypt({"-"}, inputFrom(path("input")));
  EXPECT_EQ(result.out, one + "\n");
  EXPECT_EQ(result.err.rfind("orblog: standard input: offset " + std::to_string(offset) + ": ", 0),
            0u)
      << result.err;
  EXPECT_EQ(result.status, 1);
}

TEST_F(OrblogJournal, EmptyStandardInputIsNoFault) {
  const Result result = decrypt({"-"}, inputFrom("/dev/null"));
  EXPECT_EQ(result.out, "");
  EXPECT_EQ(result.err, "orblog: standard input: empty, it ended before its first byte\n");
  EXPECT_EQ(result.status, 0);
}

TEST_F(OrblogJournal, StandardInputIsNotFollowedAndNotLookedAt) {
  expectRefused(decrypt({"--follow", "-"}),
                "--follow is not for standard input, which is always read to its end");
  EXPECT_EQ(runOrblog({"info", "-"}).status, 2);
}

TEST_F(OrblogJournal, FileWhoseNameIsADashCanBeGiven) {
  write("-", {one});
  expectOut(decrypt({path("-")}), one + "\n");
}

TEST_F(OrblogJournal, WordsAfterTwoDashesAreFiles) {
  const std::string file = write("orb_log_p0_00", {one});
  expectOut(decrypt({"--", file}), one + "\n");
  const Result result = decrypt({"--", "--json"});
  EXPECT_EQ(result.err.rfind("orblog: --json: ", 0), 0u) << result.err;
  EXPECT_EQ(result.status, 1);
}

TEST_F(OrblogJournal, LastLinesAreThoseOfAllFilesTogether) {
  const std::string file = write("orb_log_p0_00", {one, three}),
                    second = write("orb_log_p0_01", {two});
  expectOut(decrypt({"-n", "2", file, second}), two + "\n" + three + "\n");
  expectOut(decrypt({"--lines=5", file, second}), one + "\n" + two + "\n" + three + "\n");
  expectOut(decrypt({"-n0", file}), "");
  expectOut(decrypt({"-n", "1", "--level", "W", file, second}), three + "\n");
  expectOut(decrypt({"-n", "1", "-"}, inputFrom(file)), three + "\n");
  expectRefused(decrypt({"-n", "few", file}), "--lines: not a number from 0 to 1000000000: few");
}

TEST_F(OrblogJournal, LastLinesAreThenFollowed) {
  const std::string file = write("orb_log_p0_00", {one, two});
  Orblog program({"decrypt", "--key", keyPair().path(), "-f", "-n", "1", file});
  ASSERT_TRUE(program.waitForOut(two + "\n"));
  appendFile(file, sealer.record(three));
  ASSERT_TRUE(program.waitForOut(three + "\n"));
  program.signal(SIGINT);
  EXPECT_EQ(program.wait(), 0);
  EXPECT_EQ(program.out(), two + "\n" + three + "\n");
}

TEST_F(OrblogJournal, GrepTakesTheLinesInWhichItIsFound) {
  const std::string file = write("orb_log_p0_00", {one, two, three, "no line, gamma"});
  expectOut(decrypt({"--grep", "alpha", file}), one + "\n");
  expectOut(decrypt({"-g", "ALPHA", file}), "");
  expectOut(decrypt({"-g", "Log::[a-z]+:[0-9] Al", file}), one + "\n");
  expectOut(decrypt({"-g", "alpha|(be|xx)ta$", file}), one + "\n" + two + "\n");
  expectOut(decrypt({"-g", "gamma", file}), three + "\nno line, gamma\n");
}

TEST_F(OrblogJournal, GrepMindsTheCaseAsAskedFor) {
  const std::string file = write("orb_log_p0_00", {one});
  expectOut(decrypt({"-g", "alpha", "--case-sensitive", file}), "");
  expectOut(decrypt({"-g", "ALPHA", "--case-sensitive=no", file}), one + "\n");
  expectRefused(decrypt({"--case-sensitive", file}), "--case-sensitive without --grep");
}

TEST_F(OrblogJournal, WrongExpressionIsRefused) {
  const Result result = decrypt({"-g", "(", "file"});
  EXPECT_EQ(result.err.rfind("orblog decrypt: --grep: ", 0), 0u) << result.err;
  EXPECT_EQ(result.status, 2);
}

TEST_F(OrblogJournal, ProcessesAndTagsAreChosen) {
  const std::string file = write("orb_log_p0_00", {one, two, three});
  expectOut(decrypt({"--pid", "777", file}), two + "\n");
  expectOut(decrypt({"-P", "1", file}), "");
  expectOut(decrypt({"-P", "777", "-P", "1234", file}), one + "\n" + two + "\n" + three + "\n");
  expectOut(decrypt({"--tag", "DMAP", file}), two + "\n");
  expectOut(decrypt({"-t", "ORB", "-t", "DMAP", file}), one + "\n" + two + "\n" + three + "\n");
  expectOut(decrypt({"-t", "ORB", "-P", "777", file}), "");
  expectRefused(decrypt({"-P", "init", file}), "--pid: not a process id: init");
}

TEST_F(OrblogJournal, TimesGoByNow) {
  const Environment zone("TZ", "UTC0");
  const auto lineOf = [](time_t time, const std::string& text) {
    tm fields = {};
    gmtime_r(&time, &fields);
    char begin[40];
    std::strftime(begin, sizeof begin, "%F %T", &fields);
    return std::string(begin) + ".000  1  1 D ORB : " + text;
  };
  // Far enough from the limits for a slow machine.
  const time_t now = std::time(nullptr);
  const std::string old = lineOf(now - 7200, "old"), recent = lineOf(now - 1800, "recent");
  const std::string file = write("orb_log_p0_00", {one, old, recent});
  expectOut(decrypt({"--since", "-1h", file}), recent + "\n");
  expectOut(decrypt({"--since=-3h", "--until", "1 hour ago", file}), old + "\n");
  expectOut(decrypt({"-s", "-3h", "-u", "now", file}), old + "\n" + recent + "\n");
  expectOut(decrypt({"-u", "2025-05-24T12:00:01+02:00", file}), one + "\n");
}

TEST_F(OrblogJournal, RangeWithoutATimeIsRefused) {
  expectRefused(decrypt({"--since", "-1h", "--until", "-2h", "file"}),
                "--since is after --until, so no line is between them");
}

TEST_F(OrblogJournal, JsonHasTheLineInParts) {
  const std::string file = write("orb_log_p0_00", {one, "\x1b[31modd"});
  expectOut(decrypt({"--json", file}),
            "{\"time\":\"2025-05-24 10:00:01.000\",\"pid\":1234,\"tid\":1240,\"level\":\"D\","
            "\"tag\":\"ORB\",\"unit\":\"Log\",\"function\":\"init\",\"line\":1,"
            "\"message\":\"Alpha\",\"file\":\"" +
                file +
                "\",\"offset\":512,\"parsed\":true}\n"
                "{\"time\":null,\"pid\":null,\"tid\":null,\"level\":null,\"tag\":null,"
                "\"unit\":null,\"function\":null,\"line\":null,"
                "\"message\":\"\\u001b[31modd\",\"file\":\"" +
                file + "\",\"offset\":" + std::to_string(542 + one.size()) +
                ",\"parsed\":false}\n");
}

TEST_F(OrblogJournal, ColoursAreThoseOfTheLevels) {
  const std::string none = lineAt("10:00:04.000", "info \x1b[7m", 'I');
  const std::string file = write("orb_log_p0_00", {one, two, three, none});
  const std::string plain = one + "\n" + two + "\n" + three + "\n" + none + "\n";
  expectOut(decrypt({"--color", "always", file}),
            "\x1b[2m" + one + "\x1b[0m\n\x1b[33m" + two + "\x1b[0m\n\x1b[1m\x1b[31m" + three +
                "\x1b[0m\n" + lineAt("10:00:04.000", "info \\x1b[7m", 'I') + "\n");
  expectOut(decrypt({"--color=never", file}), plain);
  expectOut(decrypt({"--color", "auto", file}), plain);
  expectRefused(decrypt({"--color", "red", file}),
                "--color: not one of auto, always and never: red");
}

// --color is for this call, NO_COLOR is a general setting.
TEST_F(OrblogJournal, AskedForColoursComeDespiteNoColor) {
  const Environment wish("NO_COLOR", "1");
  const std::string file = write("orb_log_p0_00", {two});
  expectOut(decrypt({"--color", "always", file}), "\x1b[33m" + two + "\x1b[0m\n");
}

TEST_F(OrblogJournal, OfAnOptionGivenTwiceTheLastCounts) {
  const std::string file = write("orb_log_p0_00", {one, two, three});
  expectOut(decrypt({"-l", "D", "-l", "E", "-n", "5", "-n", "1", file}), three + "\n");
}

// A file that is larger than the memory limit is checked at both ends only, and read while it is
// printed.
class OrblogInOrder : public OrblogJournal {
 protected:
  static constexpr int kLines = 4000;
  static std::string lineOf(int number) {
    char time[40];
    std::snprintf(time, sizeof time, "10:%02d:%02d.%03d", number / 60000, number / 1000 % 60,
                  number % 1000);
    return lineAt(time, "number " + std::to_string(number) + std::string(100, 'x'));
  }
  Bytes manyLines() {
    Bytes bytes = header();
    for (int i = 0; i < kLines; ++i) bytes += sealer.record(lineOf(i));
    return bytes;
  }
  static std::string expected(int without = -1) {
    std::string all;
    for (int i = 0; i < kLines; ++i) {
      if (i != without) all += lineOf(i) + "\n";
    }
    return all;
  }
  size_t offsetOf(int number) const {
    size_t offset = 512;
    for (int i = 0; i < number; ++i) offset += 30 + lineOf(i).size();
    return offset;
  }
  const fs::path file = logs / "orb_log_p0_00";
};

TEST_F(OrblogInOrder, AllLinesArePrinted) {
  writeFile(file, manyLines());
  const Result result = decrypt({file.string()});
  EXPECT_TRUE(result.out == expected());
  EXPECT_EQ(result.err, "");
  EXPECT_EQ(result.status, 0);
}

TEST_F(OrblogInOrder, AlteredRecordIsNamedAndTheRestPrinted) {
  for (const int number : {1, kLines / 2, kLines - 2}) {
    Bytes bytes = manyLines();
    bytes[offsetOf(number) + 50] ^= 1;
    writeFile(file, bytes);
    const Result result = decrypt({file.string()});
    EXPECT_TRUE(result.out == expected(number));
    const std::string size = std::to_string(30 + lineOf(number).size());
    EXPECT_EQ(result.err, "orblog: " + file.string() + ": offset " +
                              std::to_string(offsetOf(number)) + ": a record of " + size +
                              " bytes fails authentication; readable again at offset " +
                              std::to_string(offsetOf(number + 1)) + "\n");
    EXPECT_EQ(result.status, 1);
  }
}

TEST_F(OrblogInOrder, AlteredEndsAreFoundAsWell) {
  for (const int number : {0, kLines - 1}) {
    Bytes bytes = manyLines();
    bytes[offsetOf(number) + 50] ^= 1;
    writeFile(file, bytes);
    const Result result = decrypt({file.string()});
    EXPECT_TRUE(result.out == expected(number));
    EXPECT_NE(result.err.find(": offset " + std::to_string(offsetOf(number)) + ": "),
              std::string::npos);
    EXPECT_EQ(result.status, 1);
  }
}

TEST_F(OrblogInOrder, LinesAreMergedWithThoseOfOtherFiles) {
  writeFile(file, manyLines());
  const std::string middle = lineAt("10:00:02.000", "middle");
  write("orb_log_p0_01", {middle});
  std::string all = expected();
  // With the same millisecond, the older file comes first.
  all.insert(all.find(lineOf(2001)), middle + "\n");
  const Result result = decrypt({logs.string()});
  EXPECT_TRUE(result.out == all);
  EXPECT_EQ(result.err, "");
}

TEST_F(OrblogInOrder, FileThatGrowsIsFollowed) {
  writeFile(file, manyLines());
  const Bytes record = sealer.record(two);
  appendFile(file, Bytes(record.begin(), record.begin() + 20));
  Orblog program({"decrypt", "--follow", "--key", keyPair().path(), file.string()});
  ASSERT_TRUE(program.waitForOut(lineOf(kLines - 1) + "\n"));
  appendFile(file, Bytes(record.begin() + 20, record.end()));
  ASSERT_TRUE(program.waitForOut(two + "\n"));
  program.signal(SIGINT);
  EXPECT_EQ(program.wait(), 0);
  EXPECT_TRUE(program.out() == expected() + two + "\n");
  EXPECT_EQ(program.err(), "");
}

}  // namespace
