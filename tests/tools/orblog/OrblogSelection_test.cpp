// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
// --level, --since and --until with lines of every form, and with records that are not log lines.
#include <gtest/gtest.h>

#include "OrblogFiles.h"
#include "OrblogRun.h"

using namespace orblogtest;

namespace {

class OrblogSelection : public testing::Test {
 protected:
  std::string write(const std::string& name, const std::vector<std::string>& texts) {
    Bytes bytes = header;
    for (const std::string& text : texts) bytes += sealer.record(text);
    writeFile(logs / name, bytes);
    return (logs / name).string();
  }
  Result decrypt(std::vector<std::string> arguments) const {
    arguments.insert(arguments.begin(), {"decrypt", "--key", keyPair().path()});
    return runOrblog(arguments);
  }
  // Records that are not log lines are not a fault.
  static void expect(const Result& result, const std::string& out, const std::string& err = "") {
    EXPECT_EQ(result.out, out);
    EXPECT_EQ(result.err, err);
    EXPECT_EQ(result.status, 0);
  }
  static std::string note(const std::string& file, const std::string& text) {
    return "orblog: " + file + ": " + text + "\n";
  }

  TemporaryDirectory logs;
  const Bytes header = keyPair().header(keyOf(1));
  Sealer sealer{keyOf(1)};
};

TEST_F(OrblogSelection, HoldsForLinesWithATwelveHourTime) {
  const std::string night = lineAt("12:00:01 AM.000", "night", 'E'),
                    morning = lineAt("11:00:02 AM.000", "morning", 'D'),
                    afternoon = lineAt("01:00:03 PM.000", "afternoon", 'E');
  const std::string file = write("orb_log_p0_00", {night, morning, afternoon});
  expect(decrypt({file}), night + "\n" + morning + "\n" + afternoon + "\n");
  expect(decrypt({"--level", "W", file}), night + "\n" + afternoon + "\n");
  expect(decrypt({"--since", "2025-05-24 11:00", file}), morning + "\n" + afternoon + "\n");
  expect(decrypt({"--until", "2025-05-24 11:00", file}), night + "\n" + morning + "\n");
  expect(decrypt({"--since", "2025-05-24 01:00 PM", file}), afternoon + "\n");
}

TEST_F(OrblogSelection, JsonHasTheTimeOfTheWholeDay) {
  const std::string file = write("orb_log_p0_00", {lineAt("10:54:01 PM.161", "late", 'E')});
  expect(decrypt({"--json", file}),
         "{\"time\":\"2025-05-24 22:54:01.161\",\"pid\":1234,\"tid\":1240,\"level\":\"E\","
         "\"tag\":\"ORB\",\"unit\":null,\"function\":null,\"line\":null,\"message\":\"late\","
         "\"file\":\"" +
             file + "\",\"offset\":512,\"parsed\":true}\n");
}

TEST_F(OrblogSelection, LinesOfBothFormsAreMerged) {
  const std::string noon = lineAt("12:00:00 PM.000", "noon"), one = lineAt("13:00:00.000", "one"),
                    two = lineAt("02:00:00 PM.000", "two");
  write("orb_log_p0_00", {noon, two});
  write("orb_log_p0_01", {one});
  expect(decrypt({logs.string()}), noon + "\n" + one + "\n" + two + "\n");
}

TEST_F(OrblogSelection, TextsThatAreNoLinesAreCountedPerFile) {
  const std::string early = lineAt("10:00:00.000", "early"), late = lineAt("12:00:00.000", "late");
  const std::string file = write("orb_log_p0_00", {early, "odd 1", late, "odd 2", "odd 3"}),
                    second = write("orb_log_p0_01", {late, "odd 4"});
  expect(decrypt({"--since", "2025-05-24 11:00", file, second}),
         late + "\nodd 2\nodd 3\n" + late + "\nodd 4\n",
         note(file,
              "3 records are no log lines, without a level or time to select by: 2 printed, "
              "1 left out") +
             note(second,
                  "1 record is no log line, without a level or time to select by: 1 "
                  "printed, 0 left out"));
}

TEST_F(OrblogSelection, WithoutOptionsTextsThatAreNoLinesGiveNoMessage) {
  expect(decrypt({write("orb_log_p0_00", {"odd"})}), "odd\n");
}

TEST_F(OrblogSelection, TextsOfAFileWithoutAnyTimeAreNotLost) {
  const std::string file = write("orb_log_p0_00", {"odd 1", "odd 2"});
  const std::string err =
      note(file,
           "2 records are no log lines, without a level or time to select by: 2 printed, 0 left "
           "out");
  expect(decrypt({"--since", "2025-05-24", file}), "odd 1\nodd 2\n", err);
  expect(decrypt({"--until", "2025-05-24", file}), "odd 1\nodd 2\n", err);
  expect(decrypt({"--level", "F", file}), "odd 1\nodd 2\n", err);
}

TEST_F(OrblogSelection, TextThatFollowsLaterHasTheTimeOfTheLineBeforeIt) {
  const std::string early = lineAt("10:00:00.000", "early"), late = lineAt("12:00:00.000", "late");
  const std::string file = write("orb_log_p0_00", {early});
  const std::string watched = write("orb_log_p0_01", {late});
  Orblog program({"decrypt", "--follow", "--key", keyPair().path(), "--since", "2025-05-24 11:00",
                  logs.string()});
  ASSERT_TRUE(program.waitForOut("late\n"));
  // Each arrives in a separate round, as the messages show; there is one message per file.
  appendFile(file, sealer.record("odd of the early one"));
  ASSERT_TRUE(program.waitForErr("0 printed, 1 left out\n"));
  appendFile(watched, sealer.record("odd of the late one"));
  ASSERT_TRUE(program.waitForOut("odd of the late one\n"));
  ASSERT_TRUE(program.waitForErr("1 printed, 0 left out\n"));
  appendFile(watched, sealer.record("another"));
  ASSERT_TRUE(program.waitForOut("another\n"));
  program.signal(SIGINT);
  EXPECT_EQ(program.wait(), 0);
  EXPECT_EQ(program.out(), late + "\nodd of the late one\nanother\n");
  const std::string what = "1 record is no log line, without a level or time to select by: ";
  EXPECT_EQ(program.err(), note(file, what + "0 printed, 1 left out") +
                               note(watched, what + "1 printed, 0 left out"));
}

}  // namespace
