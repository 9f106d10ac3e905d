// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
// orbctl plot with all kinds of recordings.
#include <gtest/gtest.h>

#include "OrbctlProgram.h"
#include "orbctl/Csv.h"
#include "orbctl/Plot.h"

using namespace orbctltest;
using orbctl::PlotData;
using orbctl::plotScript;
using orbctl::readPlotData;

namespace {

// A record of the named columns; the others are empty.
std::string record(const std::vector<std::pair<std::string, std::string>>& cells) {
  std::string line;
  for (const char* const name : orbctl::kFieldNames) {
    if (name != orbctl::kFieldNames[0]) line += ',';
    for (const auto& cell : cells) {
      if (cell.first == name) line += cell.second;
    }
  }
  return line + "\n";
}
std::string capacity(const char* seconds, const char* rate, const char* direction = "downlink") {
  return record({{"seconds", seconds},
                 {"service", "lce"},
                 {"event", "report"},
                 {"status", "SUCCESS"},
                 {"rate", rate},
                 {"direction", direction}});
}
std::string latency(const char* seconds, const char* up, const char* down) {
  return record({{"seconds", seconds},
                 {"service", "lle"},
                 {"event", "report"},
                 {"status", "SUCCESS"},
                 {"ul_latency", up},
                 {"dl_latency", down}});
}
std::string handoff(const char* seconds, const char* phase) {
  return record({{"seconds", seconds}, {"service", "lli"}, {"event", "handoff"}, {"phase", phase}});
}
std::string daemonIs(const char* seconds, const char* event) {
  return record({{"seconds", seconds}, {"service", "daemon"}, {"event", event}});
}
std::string recording() {
  return orbctl::csvHeader() + capacity("0.5", "50000") + capacity("1", "2000", "uplink") +
         latency("1", "30000", "12000") + handoff("1.5", "entry") + handoff("2", "start") +
         handoff("2.2", "success") + capacity("2.5", "48000") + daemonIs("3", "down") +
         daemonIs("5", "up") + capacity("5.5", "47000") + latency("6", "31000", "13000");
}

TEST(OrbctlPlotData, IsReadInUnitsOfPeople) {
  PlotData data;
  std::string reason;
  ASSERT_TRUE(readPlotData(recording(), data, reason)) << reason;
  ASSERT_EQ(2u, data.downlinkCapacity.size());  // interrupted while the daemon was away
  EXPECT_EQ(2u, data.downlinkCapacity[0].size());
  EXPECT_DOUBLE_EQ(50.0, data.downlinkCapacity[0][0].value);
  EXPECT_DOUBLE_EQ(0.5, data.downlinkCapacity[0][0].seconds);
  EXPECT_DOUBLE_EQ(30.0, data.uplinkLatency[0][0].value);
  EXPECT_DOUBLE_EQ(12.0, data.downlinkLatency[0][0].value);
  ASSERT_EQ(1u, data.preparations.size());
  EXPECT_DOUBLE_EQ(1.5, data.preparations[0].from);
  EXPECT_DOUBLE_EQ(2.0, data.preparations[0].to);
  ASSERT_EQ(1u, data.interruptions.size());
  EXPECT_DOUBLE_EQ(2.2, data.interruptions[0].to);
  ASSERT_EQ(1u, data.absences.size());
  EXPECT_DOUBLE_EQ(5.0, data.absences[0].to);
  EXPECT_DOUBLE_EQ(6.0, data.end);
  EXPECT_EQ(0u, data.unreadable);
}

TEST(OrbctlPlotData, WhatIsUnderWayEndsWithTheRecording) {
  PlotData data;
  std::string reason;
  ASSERT_TRUE(readPlotData(orbctl::csvHeader() + capacity("1", "5") + handoff("2", "start") +
                               daemonIs("3", "down") + daemonIs("3.5", "down") +
                               record({{"seconds", "4"}, {"service", "lce"}, {"event", "status"}}),
                           data, reason));
  ASSERT_EQ(1u, data.interruptions.size());
  EXPECT_DOUBLE_EQ(3.0, data.interruptions[0].to);
  ASSERT_EQ(1u, data.absences.size());
  EXPECT_DOUBLE_EQ(3.0, data.absences[0].from);
  EXPECT_DOUBLE_EQ(4.0, data.absences[0].to);
}

TEST(OrbctlPlotData, OtherFilesAreRefusedWithTheReason) {
  PlotData data;
  std::string reason;
  EXPECT_FALSE(readPlotData("", data, reason));
  EXPECT_EQ("it is empty", reason);
  EXPECT_FALSE(readPlotData("a,b\n1,2\n", data, reason));
  EXPECT_EQ("no column \"seconds\": not written by --csv", reason);
  EXPECT_FALSE(readPlotData(orbctl::csvHeader(), data, reason));
  EXPECT_EQ("no report and no handoff in it", reason);
}

TEST(OrbctlPlotData, RecordsThatAreNoneAreCounted) {
  PlotData data;
  std::string reason;
  ASSERT_TRUE(readPlotData(orbctl::csvHeader() + capacity("1", "5") + capacity("x", "5") +
                               capacity("2", "-1") + capacity("2", "1e400") +
                               capacity("3", "5", "sideways") + handoff("3", "dance") +
                               daemonIs("3", "bored") + latency("3", "", "1") + "2025,1",
                           data, reason));
  EXPECT_EQ(8u, data.unreadable);
  ASSERT_EQ(1u, data.downlinkCapacity.size());
  EXPECT_EQ(1u, data.downlinkCapacity[0].size());
}

TEST(OrbctlPlotData, CellsMayBeQuotedAndRecordsEndInCrLf) {
  const auto records = orbctl::csvRecordsOf("a,\"b,\"\"c\"\"\n\",d\r\n\r\n1,,");
  ASSERT_EQ(2u, records.size());
  EXPECT_EQ((std::vector<std::string>{"a", "b,\"c\"\n", "d"}), records[0]);
  EXPECT_EQ((std::vector<std::string>{"1", "", ""}), records[1]);
}

// Each field of a record in turn contains text that gnuplot would execute.
TEST(OrbctlPlotData, NoCellReachesTheScript) {
  const std::string evil = "\"`touch /tmp/x`\nEOD\nsystem('touch /tmp/x')\n!touch /tmp/x\"";
  for (const char* const column : orbctl::kFieldNames) {
    std::vector<std::pair<std::string, std::string>> cells = {
        {"seconds", "7"},       {"service", "lli"}, {"event", "handoff"}, {"phase", "start"},
        {"source", "3gpp-lte"}, {"rate", "1"},      {"status", "SUCCESS"}};
    for (auto& cell : cells) {
      if (cell.first == column) cell.second = evil;
    }
    cells.emplace_back(column, evil);
    PlotData data;
    std::string reason;
    ASSERT_TRUE(readPlotData(recording() + record(cells), data, reason));
    const std::string script = plotScript(data, orbctl::PlotForm::kSvg, {});
    EXPECT_FALSE(contains(script, "touch")) << column;
    EXPECT_FALSE(contains(script, "system")) << column;
  }
}

class OrbctlPlot : public testing::Test {
 protected:
  OrbctlPlot() { std::ofstream(mFile) << recording(); }
  ~OrbctlPlot() override {
    for (const std::string& file : {mFile, mSvg, mPng}) remove(file.c_str());
  }
  // Without gnuplot there is no picture, only an error message.
  bool canDraw() const { return system("command -v gnuplot >/dev/null 2>&1") == 0; }
  void expectDrawn(const Result& result) const {
    if (canDraw()) {
      EXPECT_EQ(0, result.status) << result.error;
    } else {
      EXPECT_EQ(1, result.status);
      EXPECT_TRUE(contains(result.error, "gnuplot is not on the path")) << result.error;
    }
  }

  const std::string mFile = "/tmp/orbctl-plot.csv", mSvg = "/tmp/orbctl-plot.svg",
                    mPng = "/tmp/orbctl-plot.PNG";
};

TEST_F(OrbctlPlot, SvgHasCurvesSpansAndAxes) {
  const Result result = runOrbctl({"plot", mFile, "-o", mSvg});
  expectDrawn(result);
  if (!canDraw()) return;
  EXPECT_EQ("", result.out + result.error);
  const std::string svg = contentOf(mSvg);
  for (const char* const part :
       {"width=\"1200\" height=\"700\"", "capacity, Mbit/s", "latency, ms", "time, s", "downlink",
        "uplink", "handoff ahead", ">handoff<", "daemon away", "Capacity, latency and handoffs",
        "0, 114, 178", "213,  94,   0", "</svg>"})
    EXPECT_TRUE(contains(svg, part)) << part;
}

TEST_F(OrbctlPlot, PngIsOfTheSizeThatWasAskedFor) {
  const Result result = runOrbctl({"plot", "--size=640x480", "--output", mPng, "--", mFile});
  expectDrawn(result);
  if (!canDraw()) return;
  const std::string png = contentOf(mPng);
  ASSERT_LT(24u, png.size());
  EXPECT_EQ("\x89PNG", png.substr(0, 4));
  EXPECT_EQ(std::string("\0\0\x02\x80\0\0\x01\xe0", 8), png.substr(16, 8));
}

TEST_F(OrbctlPlot, RecordingOfOneKindIsDrawnAsWell) {
  for (const std::string& part :
       {capacity("1", "5"), latency("1", "5", "6"), handoff("1", "start")}) {
    std::ofstream(mFile) << orbctl::csvHeader() << part;
    expectDrawn(runOrbctl({"plot", mFile, "-o", mSvg}));
  }
}

TEST_F(OrbctlPlot, GnuplotThatIsMissingIsTold) {
  Setting setting;
  setting.environment = {"PATH=/nowhere"};
  const Result result = runOrbctl({"plot", mFile, "-o", mSvg}, setting);
  EXPECT_EQ(1, result.status);
  EXPECT_EQ("orbctl plot: gnuplot is not on the path: install it (Debian: gnuplot-nox)\n",
            result.error);
}

TEST_F(OrbctlPlot, FilesThatCannotBeReadOrWrittenAreTold) {
  const Result missing = runOrbctl({"plot", "/no/such.csv", "-o", mSvg});
  EXPECT_EQ(1, missing.status);
  EXPECT_EQ(0u, missing.error.find("orbctl plot: /no/such.csv: ")) << missing.error;
  const Result empty = runOrbctl({"plot", "-", "-o", mSvg});
  EXPECT_EQ(1, empty.status);
  EXPECT_EQ("orbctl plot: standard input: it is empty\n", empty.error);
  const Result folder = runOrbctl({"plot", mFile, "-o", "/no/such/folder.svg"});
  EXPECT_EQ(1, folder.status);
  if (canDraw()) {
    EXPECT_EQ(0u, folder.error.find("orbctl plot: /no/such/folder.svg: ")) << folder.error;
  }
}

TEST_F(OrbctlPlot, FullDiskIsTold) {
  ASSERT_EQ(0, symlink("/dev/full", mSvg.c_str()));
  const Result result = runOrbctl({"plot", mFile, "-o", mSvg});
  EXPECT_EQ(1, result.status);
  if (canDraw()) {
    EXPECT_EQ(0u, result.error.find("orbctl plot: " + mSvg + ": ")) << result.error;
  }
}

TEST_F(OrbctlPlot, RecordingThatWasCutIsDrawnWithANote) {
  std::ofstream(mFile) << recording() << "2025-05-24T13:02:07.045Z,7.1,lce,rep";
  const Result result = runOrbctl({"plot", mFile, "-o", mSvg});
  expectDrawn(result);
  EXPECT_EQ(0u, result.error.find("orbctl plot: " + mFile + ": records that cannot be read: 1\n"))
      << result.error;
}

}  // namespace
