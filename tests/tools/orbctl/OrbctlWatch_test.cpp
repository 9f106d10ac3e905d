// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
// orbctl watch and orbctl report as lines, JSON and CSV.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <regex>

#include "OrbctlProgram.h"
#include "lce.pb.h"
#include "lle.pb.h"
#include "orbctl/Csv.h"
#include "orbsim/Daemon.h"

using namespace orbctltest;
using nlohmann::json;

namespace {

class OrbctlWatch : public testing::Test {
 protected:
  OrbctlWatch() {
    mOptions.reportInterval = std::chrono::milliseconds(20);
    mDaemon = std::make_unique<orbsim::Daemon>(mOptions);
  }
  void startDaemon() { ASSERT_TRUE(mDaemon->start()) << mDaemon->error(); }
  // Waits for this number of LCE requests and returns them.
  std::vector<LceProto::ServiceMsg> lceRequests(size_t count) {
    EXPECT_TRUE(mDaemon->waitForFrames(count));
    std::vector<LceProto::ServiceMsg> requests;
    for (const orbsim::Frame& frame : mDaemon->frames()) {
      if (frame.sdkType() != orbsim::kSdkTypeLce) continue;
      const orbsim::Blob blob = frame.blob();
      requests.emplace_back();
      EXPECT_TRUE(requests.back().ParseFromArray(blob.data(), static_cast<int>(blob.size())));
    }
    return requests;
  }
  static bool matches(const std::string& line, const std::string& pattern) {
    return std::regex_match(line, std::regex("\\d\\d:\\d\\d:\\d\\d\\.\\d\\d\\d " + pattern));
  }
  static std::vector<json> objectsOf(const std::string& text) {
    std::vector<json> objects;
    for (const std::string& line : linesOf(text)) objects.push_back(json::parse(line));
    return objects;
  }

  orbsim::Options mOptions;
  std::unique_ptr<orbsim::Daemon> mDaemon;
};

TEST_F(OrbctlWatch, CapacityIsPrintedInLines) {
  startDaemon();
  const Result result = runOrbctl({"watch", "lce", "--count", "3"});
  EXPECT_EQ(0, result.status) << result.error;
  EXPECT_EQ("", result.error);
  const auto lines = linesOf(result.out);
  ASSERT_EQ(6u, lines.size()) << result.out;
  EXPECT_TRUE(matches(lines[0], "lce  status SUCCESS")) << lines[0];
  EXPECT_TRUE(matches(lines[1], "daemon is there")) << lines[1];
  EXPECT_TRUE(matches(lines[2], "lce  criteria SUCCESS")) << lines[2];
  for (size_t i = 3; i < 6; ++i)
    EXPECT_TRUE(matches(lines[i],
                        "lce  (up|down)link [0-9.]+ Mbit/s, confidence [0-7] of 7, uplink queue "
                        "[0-9.]+ k?B"))
        << lines[i];
}

TEST_F(OrbctlWatch, LatencyAndHandoffsArePrintedInLines) {
  startDaemon();
  Orbctl program({"watch", "LLE", "lli"});
  EXPECT_TRUE(program.waitForOut(" lle  uplink "));
  EXPECT_TRUE(program.waitForOut(": entry"));
  EXPECT_TRUE(program.waitForOut(": exit"));
  program.signal(SIGTERM);
  EXPECT_EQ(128 + SIGTERM, program.wait());
  bool latency = false, handoff = false;
  for (const std::string& line : linesOf(program.out())) {
    EXPECT_FALSE(contains(line, " lce ")) << line;
    latency |= matches(line,
                       "lle  uplink [0-9.]+ ms \\+-[0-9.]+, downlink [0-9.]+ ms \\+-[0-9.]+, "
                       "(LTE|5G|WCDMA)");
    handoff |= matches(line,
                       "lli  [^:]+ to [^:]+: (entry|imminent), interruption in "
                       "[0-9.]+ m?s, for [0-9.]+ m?s");
  }
  EXPECT_TRUE(latency) << program.out();
  EXPECT_TRUE(handoff) << program.out();
}

TEST_F(OrbctlWatch, AllServicesWhenNoneIsNamed) {
  startDaemon();
  Orbctl program({"watch", "--"});
  EXPECT_TRUE(program.waitForOut(" lce  status SUCCESS\n"));
  EXPECT_TRUE(program.waitForOut(" lle  status SUCCESS\n"));
  EXPECT_TRUE(program.waitForOut(" lli  status SUCCESS\n"));
  program.signal(SIGINT);
  EXPECT_EQ(128 + SIGINT, program.wait());
  EXPECT_TRUE(mDaemon->waitForSessionsClosed(3));
}

TEST_F(OrbctlWatch, EndsAfterItsTime) {
  startDaemon();
  const Result result = runOrbctl({"watch", "lli", "--seconds", "12.5"});
  EXPECT_EQ(0, result.status) << result.error;
  EXPECT_TRUE(contains(result.out, " lli  status SUCCESS\n")) << result.out;
}

TEST_F(OrbctlWatch, TimeWithoutAnAnswerIsAFailure) {
  const Result result = runOrbctl({"watch", "-t", "0.2"});
  EXPECT_EQ(1, result.status);
  EXPECT_EQ("orbctl watch: no service answered; see orbctl status\n", result.error);
}

// One after the other; the limit is relative to the time that the program was told to run.
TEST_F(OrbctlWatch, WaitingTakesLittleOfACore) {
  Orbctl program({"watch", "--seconds", "8"});
  EXPECT_EQ(1, program.wait());
  EXPECT_LT(program.computedMs(), 4000);
}

TEST_F(OrbctlWatch, FollowsADaemonThatGoesAndComes) {
  startDaemon();
  Orbctl program({"watch"});
  EXPECT_TRUE(program.waitForOut(" daemon is there\n"));
  EXPECT_TRUE(program.waitForOut(" lli  status SUCCESS\n"));
  EXPECT_TRUE(program.waitForOut(" lce  downlink ") || program.waitForOut(" lce  uplink "));
  mDaemon->stop();
  EXPECT_TRUE(program.waitForOut(" daemon is away; trying again\n"));
  ASSERT_TRUE(mDaemon->start());
  EXPECT_TRUE(program.waitForOut(" daemon is there\n"));
  for (const char* const service : {"lce", "lle", "lli"})
    EXPECT_TRUE(program.waitForOut(std::string(" ") + service + "  ")) << program.out();
  program.signal(SIGINT);
  EXPECT_EQ(128 + SIGINT, program.wait());
}

TEST_F(OrbctlWatch, WaitsForADaemonThatIsNotThereYet) {
  Orbctl program({"watch", "lle", "--count", "1"});
  EXPECT_TRUE(program.waitForOut(" daemon is away; trying again\n"));
  startDaemon();
  EXPECT_EQ(0, program.wait());
  EXPECT_TRUE(contains(program.out(), " lle  uplink ")) << program.out();
}

TEST_F(OrbctlWatch, ServiceThatIsLostAloneIsAskedAnew) {
  startDaemon();
  Orbctl program({"watch", "lce", "lli"});
  EXPECT_TRUE(program.waitForOut(" lli  status SUCCESS\n"));
  ASSERT_TRUE(mDaemon->closeSession(1));
  EXPECT_TRUE(program.waitForOut("status SERVICE_DOWN\n"));
  EXPECT_TRUE(program.waitForOut(" lce  status SUCCESS\n"));
  program.signal(SIGHUP);
  EXPECT_EQ(128 + SIGHUP, program.wait());
}

TEST_F(OrbctlWatch, JsonHasAnObjectPerLine) {
  startDaemon();
  const Result result = runOrbctl({"watch", "--json", "-n", "120"});
  EXPECT_EQ(0, result.status) << result.error;
  std::map<std::string, json> seen;
  double last = 0;
  for (const json& object : objectsOf(result.out)) {
    EXPECT_GE(object["seconds"].get<double>(), last);
    last = object["seconds"].get<double>();
    EXPECT_TRUE(
        std::regex_match(object["time"].get<std::string>(),
                         std::regex("\\d{4}-\\d\\d-\\d\\dT\\d\\d:\\d\\d:\\d\\d\\.\\d{3}Z")));
    seen[object["service"].get<std::string>() + " " + object["event"].get<std::string>()] = object;
  }
  const auto keysOf = [&](const std::string& which) {
    std::string keys;
    for (const auto& item : seen[which].items()) keys += item.key() + " ";
    return keys;
  };
  EXPECT_EQ("confidence direction event queue rate seconds service status time ",
            keysOf("lce report"));
  EXPECT_EQ(
      "dl_latency dl_status dl_variance event interval network seconds service status time "
      "ul_latency ul_status ul_variance ",
      keysOf("lle report"));
  EXPECT_EQ("duration event phase seconds service source target time to_interruption ",
            keysOf("lli handoff"));
  EXPECT_EQ("event seconds service status time ", keysOf("lce criteria"));
  EXPECT_EQ("event seconds service status time ", keysOf("lli status"));
  EXPECT_EQ("event seconds service time ", keysOf("daemon up"));
}

TEST_F(OrbctlWatch, CsvHasTheDocumentedColumns) {
  startDaemon();
  const Result result = runOrbctl({"watch", "--csv", "-", "--count", "20"});
  EXPECT_EQ(0, result.status) << result.error;
  const auto records = orbctl::csvRecordsOf(result.out);
  ASSERT_LT(20u, records.size());
  EXPECT_EQ(
      "time,seconds,service,event,status,rate,confidence,direction,queue,ul_latency,"
      "ul_variance,ul_status,dl_latency,dl_variance,dl_status,interval,network,phase,source,"
      "target,to_interruption,duration",
      linesOf(result.out)[0]);
  for (const auto& record : records) EXPECT_EQ(22u, record.size());
}

TEST_F(OrbctlWatch, CsvFileIsWrittenBesideTheLines) {
  startDaemon();
  std::ofstream("/tmp/orbctl.csv") << "of before";
  const Result result = runOrbctl({"watch", "lce", "-c", "/tmp/orbctl.csv", "--count", "2"});
  EXPECT_EQ(0, result.status) << result.error;
  const auto lines = linesOf(contentOf("/tmp/orbctl.csv"));
  // The header, and one record per line.
  EXPECT_EQ(linesOf(result.out).size() + 1, lines.size()) << result.out;
  EXPECT_EQ(0u, lines[0].find("time,seconds,"));
  EXPECT_TRUE(std::regex_match(
      lines.back(),
      std::regex("[^,]+Z,\\d+\\.\\d{3},lce,report,SUCCESS,\\d+,[0-7],(up|down)link,\\d+,{13}")))
      << lines.back();
  remove("/tmp/orbctl.csv");
}

TEST_F(OrbctlWatch, ColorsAreForTerminalsUnlessAsked) {
  startDaemon();
  const std::vector<std::string> words = {"watch", "lce", "-n1"};
  const auto with = [&](const char* choice) {
    auto all = words;
    all.insert(all.end(), {"--color", choice});
    return runOrbctl(all, settingOf({"NO_COLOR=1"})).out;
  };
  EXPECT_FALSE(contains(runOrbctl(words).out, "\x1b["));
  EXPECT_FALSE(contains(with("auto"), "\x1b["));
  EXPECT_FALSE(contains(with("never"), "\x1b["));
  EXPECT_TRUE(contains(with("Always"), "\x1b[32mSUCCESS\x1b[0m"));
}

TEST_F(OrbctlWatch, FullDiskEndsIt) {
  startDaemon();
  for (const std::vector<std::string>& words : {std::vector<std::string>{"watch"},
                                                {"watch", "-n", "1"},
                                                {"watch", "--json"},
                                                {"watch", "--csv", "-"},
                                                {"report", "lce", "-n", "1"}}) {
    const Result out = runOrbctl(words, settingOf({}, "/dev/full"));
    EXPECT_EQ(1, out.status);
    const std::string command = words[0] == "report" ? "report lce" : "watch";
    EXPECT_EQ("orbctl " + command + ": standard output: " + std::strerror(ENOSPC) + "\n",
              out.error);
  }
  const Result csv = runOrbctl({"watch", "--csv", "/dev/full"});
  EXPECT_EQ(1, csv.status);
  EXPECT_EQ(0u, csv.error.find("orbctl watch: /dev/full: ")) << csv.error;
}

TEST_F(OrbctlWatch, CsvFileThatCannotBeMadeIsTold) {
  const Result result = runOrbctl({"watch", "--csv", "/no/such/file"});
  EXPECT_EQ(1, result.status);
  EXPECT_EQ(0u, result.error.find("orbctl watch: /no/such/file: ")) << result.error;
}

TEST_F(OrbctlWatch, ReaderThatGoesAwayEndsItQuietly) {
  startDaemon();
  Orbctl program({"watch"});
  EXPECT_TRUE(program.waitForOut("\n"));
  program.closeOut();
  EXPECT_EQ(-SIGPIPE, program.wait());
  EXPECT_EQ("", program.error());
}

TEST_F(OrbctlWatch, LogOfTheLibraryIsKeptAwayUnlessAsked) {
  startDaemon();
  const std::vector<std::string> words = {"watch", "lce", "-n1"};
  EXPECT_EQ("", runOrbctl(words, settingOf({"ORB_LOG_LEVEL"})).error);
  EXPECT_TRUE(contains(runOrbctl(words, settingOf({"ORB_LOG_LEVEL=D"})).error, "orb_lce_enable"));
  const Result full = runOrbctl(words, settingOf({"ORB_LOG_LEVEL"}, "/dev/full"));
  EXPECT_EQ(0u, full.error.find("orbctl watch: standard output: ")) << full.error;
}

TEST_F(OrbctlWatch, ReportLceSendsAllCriteriaAndActions) {
  startDaemon();
  const Result result = runOrbctl({"report", "lce", "--first", "1,2,4294967295", "--second=7",
                                   "--value1", "11", "--value2", "12", "--network", "Nr5G",
                                   "--action", "START,reset", "--count", "2", "--json"});
  EXPECT_EQ(0, result.status) << result.error;
  const auto requests = lceRequests(4);
  ASSERT_LE(4u, requests.size());
  const LceProto::SetReportingCriteria& criteria = requests[1].data().set_reporting_criteria();
  EXPECT_EQ(3u, criteria.first_list_count());
  EXPECT_EQ(4294967295u, criteria.first_list(2));
  EXPECT_EQ(1u, criteria.second_list_count());
  EXPECT_EQ(7u, criteria.second_list(0));
  EXPECT_EQ(11u, criteria.criteria_value_1());
  EXPECT_EQ(12u, criteria.criteria_value_2());
  EXPECT_EQ(LceProto::NR5G, criteria.access_network());
  EXPECT_EQ(LceProto::START, requests[2].data().perform_reporting_action().action());
  EXPECT_EQ(LceProto::RESET, requests[3].data().perform_reporting_action().action());
  EXPECT_EQ("report", objectsOf(result.out).back()["event"]);
}

TEST_F(OrbctlWatch, ReportLceStopsAsAsked) {
  startDaemon();
  const Result result = runOrbctl({"report", "lce", "--action", "stop", "--seconds", "12"});
  EXPECT_EQ(0, result.status) << result.error;
  EXPECT_FALSE(contains(result.out, "Mbit/s")) << result.out;
  EXPECT_EQ(LceProto::STOP, lceRequests(3).at(2).data().perform_reporting_action().action());
}

TEST_F(OrbctlWatch, ReportLceGivesTheLatestReport) {
  startDaemon();
  const Result result = runOrbctl({"report", "lce", "--last", "--csv", "-"});
  EXPECT_EQ(0, result.status) << result.error;
  EXPECT_TRUE(contains(linesOf(result.out).back(), ",lce,report,SUCCESS,")) << result.out;
  EXPECT_EQ(LceProto::GET_LAST_ESTIMATION_REPORT, lceRequests(3).at(2).event_id());
}

TEST_F(OrbctlWatch, ReportLceTellsOfRefusedCriteria) {
  LceProto::ClientMsg answer;
  answer.set_event_id(LceProto::SET_REPORTING_CRITERIA_ASYNC_RESULT);
  auto* const refusal = answer.mutable_data()->mutable_set_reporting_criteria_resp();
  refusal->set_error("REPORTING_CRITERIA_TYPE_MISMATCH");
  mDaemon->setFrameHandler([=](orbsim::Session& session, const orbsim::Frame& frame) {
    LceProto::ServiceMsg request;
    const orbsim::Blob blob = frame.blob();
    if (!request.ParseFromArray(blob.data(), static_cast<int>(blob.size())) ||
        request.event_id() != LceProto::SET_REPORTING_CRITERIA)
      return false;
    LceProto::ClientMsg copy = answer;
    copy.set_transaction_id(request.transaction_id());
    const std::string text = copy.SerializeAsString();
    return session.sendBlob(orbsim::kSdkTypeLce, orbsim::Blob(text.begin(), text.end()));
  });
  startDaemon();
  const Result result = runOrbctl({"report", "lce"});
  EXPECT_EQ(1, result.status);
  EXPECT_EQ("orbctl report lce: lce: the daemon refused the criteria: TYPE_MISMATCH\n",
            result.error);
}

TEST_F(OrbctlWatch, ReportLleSendsItsCriteria) {
  startDaemon();
  const Result result = runOrbctl({"report", "lle", "--criteria", "3", "-n", "2"});
  EXPECT_EQ(0, result.status) << result.error;
  ASSERT_TRUE(mDaemon->waitForFrames(2));
  LleProto::ServiceMsg request;
  const orbsim::Blob blob = mDaemon->frames()[1].blob();
  ASSERT_TRUE(request.ParseFromArray(blob.data(), static_cast<int>(blob.size())));
  EXPECT_EQ(3u, request.data().set_reporting_criteria().reporting_criteria());
  EXPECT_TRUE(contains(linesOf(result.out).back(), " lle  uplink ")) << result.out;
}

TEST_F(OrbctlWatch, ReportLleGivesTheLatestReport) {
  startDaemon();
  const Result result = runOrbctl({"report", "lle", "--last", "--color=never"});
  EXPECT_EQ(0, result.status) << result.error;
  EXPECT_TRUE(contains(linesOf(result.out).back(), " lle  uplink ")) << result.out;
}

}  // namespace
