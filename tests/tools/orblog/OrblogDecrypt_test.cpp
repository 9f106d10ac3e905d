// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <ctime>

#include "OrblogFiles.h"
#include "OrblogRun.h"

using namespace orblogtest;

namespace {

class OrblogDecrypt : public testing::Test {
 protected:
  // Writes a log file of the session and returns its path.
  std::string write(const std::string& name, const std::vector<std::string>& lines,
                    uint8_t session = 1) {
    Bytes file = headerOf(session);
    Sealer sealer(keyOf(session));
    for (const std::string& line : lines) file += sealer.record(line);
    writeFile(logs / name, file);
    return path(name);
  }
  static Bytes headerOf(uint8_t session) {
    static const Bytes kHeaders[] = {keyPair().header(keyOf(1)), keyPair().header(keyOf(2))};
    return kHeaders[session - 1];
  }
  std::string path(const std::string& name) const { return (logs / name).string(); }
  Result decrypt(std::vector<std::string> arguments) const {
    arguments.insert(arguments.begin(), {"decrypt", "--key", keyPair().path()});
    return runOrblog(arguments);
  }
  // Expects these lines and no fault.
  void expectOut(const Result& result, const std::string& out) const {
    EXPECT_EQ(result.out, out);
    EXPECT_EQ(result.err, "");
    EXPECT_EQ(result.status, 0);
  }
  void expectFault(const Result& result, const std::string& out, const std::string& err) const {
    EXPECT_EQ(result.out, out);
    EXPECT_EQ(result.err, err);
    EXPECT_EQ(result.status, 1);
  }

  TemporaryDirectory logs;
  const std::string one = lineAt("10:00:01.000", "one", 'D'),
                    two = lineAt("10:00:02.000", "two", 'W'),
                    three = lineAt("10:00:03.000", "three", 'E');
};

TEST_F(OrblogDecrypt, LinesAreExactlyWhatWasLogged) {
  const std::string odd = lineAt("10:00:02.500", "\x1b[31m\xFF\t%s\\");
  expectOut(decrypt({write("orb_log_p0_00", {one, odd, "no line at all"})}),
            one + "\n" + odd + "\nno line at all\n");
}

TEST_F(OrblogDecrypt, DirectoryGivesAllItsLogFilesInTheOrderOfTime) {
  fs::create_directories(logs / "main");
  fs::create_directories(logs / "other/deeper");
  write("main/orb_log_p0_01", {two});
  write("other/orb_log_app_00", {three}, 2);
  write("orb_log_p0_00", {one});
  write("other/deeper/orb_log_app_00", {"too deep"});
  for (const char* name : {"orb_log_config", "orb_log_trace", "orb_log_private.pem", "notes"})
    writeFile(logs / "main" / name, {1, 2, 3});
  expectOut(decrypt({logs.string()}), one + "\n" + two + "\n" + three + "\n");
}

TEST_F(OrblogDecrypt, RotatedFilesOfOneMillisecondKeepTheOrderOfWriting) {
  // With 3 files: 00, 01, 02, 03, then 00 is removed, then 01 again, which is now the newest.
  std::string expected;
  const auto fill = [&](const std::string& name, const std::string& from, const std::string& to) {
    std::vector<std::string> lines = {lineAt(from, name + " first"), lineAt(to, name + " last")};
    write("orb_log_p0_" + name, lines);
    expected += lines[0] + "\n" + lines[1] + "\n";
  };
  fill("02", "10:00:00.000", "10:00:01.000");
  fill("03", "10:00:01.000", "10:00:02.000");
  fill("01", "10:00:02.000", "10:00:03.000");
  // Copies have the time of copying.
  fs::last_write_time(logs / "orb_log_p0_02", fs::file_time_type::clock::now());
  expectOut(decrypt({logs.string()}), expected);
}

TEST_F(OrblogDecrypt, FileGivenTwiceIsReadOnce) {
  const std::string file = write("orb_log_p0_00", {one});
  expectOut(decrypt({file, logs.string(), file}), one + "\n");
}

TEST_F(OrblogDecrypt, HeaderAloneIsNoFault) {
  expectOut(decrypt({write("orb_log_p0_00", {})}), "");
}

TEST_F(OrblogDecrypt, LevelTakesThatAndAbove) {
  const std::string file = write("orb_log_p0_00", {one, two, three});
  expectOut(decrypt({"--level", "W", file}), two + "\n" + three + "\n");
  expectOut(decrypt({"-l", "e", file}), three + "\n");
}

TEST_F(OrblogDecrypt, SinceAndUntilIncludeWhatTheyName) {
  const std::string file = write("orb_log_p0_00", {one, two, three});
  expectOut(decrypt({"--since", "2025-05-24 10:00:02", "--until", "2025-05-24 10:00:02", file}),
            two + "\n");
  expectOut(decrypt({"--since", "2025-05-25", file}), "");
  expectOut(decrypt({"--until", "2025-05-24", file}), one + "\n" + two + "\n" + three + "\n");
}

TEST_F(OrblogDecrypt, TimeAloneIsOfToday) {
  const auto today = [] {
    const time_t now = time(nullptr);
    tm local = {};
    localtime_r(&now, &local);
    char text[16];
    std::strftime(text, sizeof text, "%F", &local);
    return std::string(text);
  };
  // Midnight can pass while the program runs.
  std::string day;
  Result result = {};
  do {
    day = today();
    const std::string file = write("orb_log_p0_00", {one, day + " 12:00:00.000  1  1 D ORB : now"});
    result = decrypt({"--since", "12:00", "--until", "12:00", file});
  } while (day != today());
  expectOut(result, day + " 12:00:00.000  1  1 D ORB : now\n");
}

TEST_F(OrblogDecrypt, JsonIsAnObjectPerLine) {
  const std::string file =
      write("orb_log_p0_00", {lineAt("10:00:01.000", "say \"hi\"", 'E'), "\xFF"});
  expectOut(
      decrypt({"--json", file}),
      "{\"time\":\"2025-05-24 10:00:01.000\",\"pid\":1234,\"tid\":1240,\"level\":\"E\","
      "\"tag\":\"ORB\",\"unit\":null,\"function\":null,\"line\":null,"
      "\"message\":\"say \\\"hi\\\"\",\"file\":\"" +
          file +
          "\",\"offset\":512,\"parsed\":true}\n"
          "{\"time\":null,\"pid\":null,\"tid\":null,\"level\":null,\"tag\":null,"
          "\"unit\":null,\"function\":null,\"line\":null,\"message\":\"\\ufffd\",\"file\":\"" +
          file + "\",\"offset\":" + std::to_string(512 + 30 + 52) + ",\"parsed\":false}\n");
}

TEST_F(OrblogDecrypt, DamagedRecordIsNamedWithFileAndOffset) {
  const std::string file = write("orb_log_p0_00", {one, two, three});
  Bytes bytes = readFile(file);
  const size_t offset = 512 + 30 + one.size();
  bytes[offset + 40] ^= 1;
  writeFile(file, bytes);
  expectFault(decrypt({file}), one + "\n" + three + "\n",
              "orblog: " + file + ": offset " + std::to_string(offset) + ": a record of " +
                  std::to_string(30 + two.size()) + " bytes fails authentication; readable again " +
                  "at offset " + std::to_string(offset + 30 + two.size()) + "\n");
}

TEST_F(OrblogDecrypt, CutRecordAndImpossibleLengthAreNamedWithFileAndOffset) {
  const std::string cut = write("orb_log_p0_00", {one, two});
  fs::resize_file(cut, fs::file_size(cut) - 1);
  const std::string wrong = write("orb_log_p0_01", {three});
  appendFile(wrong, {5, 0});
  const std::string size = std::to_string(30 + two.size());
  expectFault(decrypt({cut, wrong}), one + "\n" + three + "\n",
              "orblog: " + cut + ": offset " + std::to_string(542 + one.size()) +
                  ": the last record is cut off: " + size + " bytes expected, " +
                  std::to_string(29 + two.size()) + " present\n" + "orblog: " + wrong +
                  ": offset " + std::to_string(542 + three.size()) +
                  ": record length 5 cannot be right (2 bytes); nothing readable follows\n");
}

TEST_F(OrblogDecrypt, WrongKeyAndForeignFileAreNamed) {
  static const RsaKeyPair other(3072);
  const std::string file = write("orb_log_p0_00", {one});
  const Result result = runOrblog({"decrypt", "--key", other.path(), file});
  expectFault(result, "",
              "orblog: " + file +
                  ": offset 0: made for another private key, of up to 2048 bits; this one has "
                  "3072\n");
  writeFile(logs / "foreign", Bytes(5000, 'x'));
  expectFault(
      decrypt({path("foreign"), file}), one + "\n",
      "orblog: " + path("foreign") + ": offset 0: a text file, not an encrypted log file\n");
}

TEST_F(OrblogDecrypt, HeaderOfZerosIsExplained) {
  const std::string file = write("orb_log_p0_00", {one});
  Bytes bytes = readFile(file);
  std::fill_n(bytes.begin(), 512, uint8_t{0});
  writeFile(file, bytes);
  expectFault(decrypt({file}), "",
              "orblog: " + file +
                  ": offset 0: the header is all zeros: the session key could not be wrapped when "
                  "the file was made, for example because the public key is too small; nobody can "
                  "read the records\n");
}

// The library accepts such a key and writes a header of zeros.
TEST_F(OrblogDecrypt, KeyThatIsTooSmallForASessionKeyIsExplained) {
  static const RsaKeyPair small(512), sufficient(600);
  const std::string file = path("orb_log_p0_00");
  Bytes bytes(512);
  bytes += Sealer(keyOf(1)).record(one);
  writeFile(file, bytes);
  const std::string warning = "orblog: " + small.path() +
                              ": a key of 512 bits is too small to wrap a session key: logs made "
                              "for it have a header of zeros, and nobody can read them\n",
                    fault = "orblog: " + file +
                            ": offset 0: the header is all zeros: the session key could not be "
                            "wrapped when the file was made, for example because the public key is "
                            "too small; nobody can read the records\n";
  expectFault(runOrblog({"decrypt", "--key", small.path(), file}), "", warning + fault);
  expectFault(runOrblog({"decrypt", "--key", sufficient.path(), file}), "", fault);
  const Result info = runOrblog({"info", "--key", small.path(), file});
  EXPECT_EQ(info.err, warning + fault);
  EXPECT_NE(info.out.find("  header:   zeros, the session key is lost\n"
                          "  records:  1 by their lengths\n"
                          "  key:      512 bits, but no key fits zeros\n"
                          "  readable: 0 records\n"),
            std::string::npos)
      << info.out;
  EXPECT_EQ(info.status, 1);
  bytes = sufficient.header(keyOf(1));
  bytes += Sealer(keyOf(1)).record(one);
  writeFile(file, bytes);
  expectOut(runOrblog({"decrypt", "--key", sufficient.path(), file}), one + "\n");
}

TEST_F(OrblogDecrypt, FileWithoutHeaderIsReadWithTheKeyOfAnotherGivenFile) {
  const std::string whole = write("orb_log_p0_01", {two});
  writeFile(logs / "orb_log_p0_00", Sealer(keyOf(1), 1).record(one));
  const Result result = decrypt({path("orb_log_p0_00"), whole});
  EXPECT_EQ(result.out, one + "\n" + two + "\n");
  EXPECT_EQ(result.err, "orblog: " + path("orb_log_p0_00") +
                            ": offset 0: no header, the file was removed while it was written and "
                            "made anew; read with the session key of " +
                            whole + "\n");
  EXPECT_EQ(result.status, 0);
}

TEST_F(OrblogDecrypt, TwoProcessesInOneFileAreReadWithBothKeys) {
  write("orb_log_p0_00", {one}, 1);
  appendFile(logs / "orb_log_p0_00", Sealer(keyOf(2), 1).record(two));
  write("orb_log_p0_01", {three}, 2);
  expectOut(decrypt({logs.string()}), one + "\n" + two + "\n" + three + "\n");
}

TEST_F(OrblogDecrypt, ManyFaultsOfAFileAreCounted) {
  const std::string file = write("orb_log_p0_00", {});
  Sealer good(keyOf(1)), bad(keyOf(2), 1);
  Bytes bytes;
  for (int i = 0; i < 30; ++i) {
    bytes += bad.record(one);
    bytes += good.record(two);
  }
  appendFile(file, bytes);
  const Result result = decrypt({file});
  EXPECT_EQ(std::count(result.err.begin(), result.err.end(), '\n'), 21);
  EXPECT_NE(result.err.find("orblog: " + file + ": and 10 more places like these\n"),
            std::string::npos);
  EXPECT_EQ(std::count(result.out.begin(), result.out.end(), '\n'), 30);
}

TEST_F(OrblogDecrypt, WhatIsNotThereIsNamedAndTheRestIsRead) {
  const std::string file = write("orb_log_p0_00", {one});
  fs::create_directories(logs / "empty");
  ASSERT_TRUE(shell("mkfifo " + path("pipe")));
  const Result result = decrypt({path("missing"), path("empty"), path("pipe"), file});
  expectFault(result, one + "\n",
              "orblog: " + path("missing") + ": " + strerror(ENOENT) + "\n" + "orblog: " +
                  path("empty") + ": no log files in this directory\n" + "orblog: " + path("pipe") +
                  ": not a regular file; give - to read standard input\n");
}

TEST_F(OrblogDecrypt, KeysOfEveryFormAreRead) {
  const std::string file = write("orb_log_p0_00", {one});
  const std::string pkcs1 = path("pkcs1.pem"), pkcs8 = path("pkcs8.pem"),
                    locked = path("locked.pem");
  ASSERT_TRUE(shell("openssl rsa -traditional -in " + keyPair().path() + " -out " + pkcs1));
  ASSERT_TRUE(shell("openssl pkcs8 -topk8 -nocrypt -in " + keyPair().path() + " -out " + pkcs8));
  ASSERT_TRUE(shell("openssl pkcs8 -topk8 -v2 aes-256-cbc -passout pass:secret -in " +
                    keyPair().path() + " -out " + locked));
  writeFile(logs / "pass", {'s', 'e', 'c', 'r', 'e', 't', '\n'});
  writeFile(logs / "nopass", {'w', 'r', 'o', 'n', 'g', '\n'});
  for (const std::string& key : {pkcs1, pkcs8})
    expectOut(runOrblog({"decrypt", "--key", key, file}), one + "\n");
  expectOut(runOrblog({"decrypt", "-k", locked, "--passphrase-file", path("pass"), file}),
            one + "\n");
  expectFault(runOrblog({"decrypt", "-k", locked, "-p", path("nopass"), file}), "",
              "orblog: " + locked + ": the passphrase is wrong\n");
}

TEST_F(OrblogDecrypt, KeysThatCannotServeAreRefused) {
  const std::string file = write("orb_log_p0_00", {one});
  const std::string ec = path("ec.pem");
  ASSERT_TRUE(shell("openssl ecparam -name prime256v1 -genkey -noout -out " + ec));
  const auto refusal = [&](const std::string& key) {
    return runOrblog({"decrypt", "--key", key, file});
  };
  expectFault(refusal(ec), "", "orblog: " + ec + ": not an RSA key\n");
  expectFault(refusal(keyPair().publicPath()), "",
              "orblog: " + keyPair().publicPath() +
                  ": a public key; logs are opened by the private key that belongs to it\n");
  expectFault(refusal(path("missing")), "",
              "orblog: cannot open " + path("missing") + ": " + strerror(ENOENT) + "\n");
}

TEST_F(OrblogDecrypt, WrongArgumentsAreNamedInOneLine) {
  const auto expectRefused = [](const std::vector<std::string>& arguments,
                                const std::string& text) {
    const Result result = runOrblog(arguments);
    EXPECT_EQ(result.err, text + "\n");
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(result.status, 2);
  };
  expectRefused({}, "orblog: no command given; try 'orblog --help'");
  expectRefused({"read"}, "orblog: no such command or option: read; try 'orblog --help'");
  expectRefused({"--all"}, "orblog: no such command or option: --all; try 'orblog --help'");
  expectRefused({"decrypt", "file"},
                "orblog decrypt: --key is missing; try 'orblog decrypt --help'");
  expectRefused({"decrypt", "--key", "k"},
                "orblog decrypt: no file or directory is given; try 'orblog decrypt --help'");
  expectRefused({"decrypt", "--level", "S"},
                "orblog decrypt: --level: not one of V, D, I, W, E and F: S; try 'orblog decrypt "
                "--help'");
  expectRefused({"decrypt", "--since", "noon"},
                "orblog decrypt: --since: not a time: noon; try 'orblog decrypt --help'");
  expectRefused({"decrypt", "--bogus"},
                "orblog decrypt: unknown option: --bogus; try 'orblog decrypt --help'");
}

TEST_F(OrblogDecrypt, AHundredThousandRecordsInRotatedFilesAreMerged) {
  Sealer sealer(keyOf(1));
  std::string expected;
  for (int number = 0; number < 4; ++number) {
    Bytes bytes = headerOf(1);
    for (int i = 0; i < 25000; ++i) {
      char time[40];
      const int ms = number * 25000 + i;
      std::snprintf(time, sizeof time, "10:%02d:%02d.%03d", ms / 60000, ms / 1000 % 60, ms % 1000);
      const std::string line = lineAt(time, "record " + std::to_string(ms));
      bytes += sealer.record(line);
      expected += line + "\n";
    }
    writeFile(logs / ("orb_log_p0_0" + std::to_string(3 - number)), bytes);
  }
  expectOut(decrypt({logs.string()}), expected);
}

}  // namespace
