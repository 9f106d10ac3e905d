// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
//
// What the test kit promises, with the real library and outside of any sandbox.
#include <stdlib.h>

#include <algorithm>
#include <filesystem>
#include <future>

#include "KitFixture.h"

namespace {

using namespace kitclient;
using namespace orbsim::testkit;
using Phase = HandoffPhase::Phase;

// The socket.

TEST_F(Kit, HasAPlaceOfItsOwnWhichGoesWithIt) {
  std::string path;
  {
    Settings settings;
    settings.redirect = false;
    TestDaemon other(settings);
    ASSERT_TRUE(other.start()) << other.error();
    path = other.socketPath();
    EXPECT_NE(daemon().socketPath(), path);
    EXPECT_TRUE(std::filesystem::is_socket(path));
  }
  EXPECT_FALSE(std::filesystem::exists(std::filesystem::path(path).parent_path()));
}

TEST_F(Kit, HasAShortPathWhereTemporaryFilesHaveALongOne) {
  const char* const before = getenv("TMPDIR");
  const std::string saved = before != nullptr ? before : "";
  setenv("TMPDIR", ("/tmp/" + std::string(120, 'x')).c_str(), 1);
  const TestDaemon other;
  if (before != nullptr) {
    setenv("TMPDIR", saved.c_str(), 1);
  } else {
    unsetenv("TMPDIR");
  }
  EXPECT_EQ(0u, other.socketPath().find("/tmp/orbsim-")) << other.socketPath();
}

TEST_F(Kit, DoesNotTakeASocketThatSomebodyListensOn) {
  Settings settings;
  settings.redirect = false;
  settings.socketPath = daemon().socketPath();
  TestDaemon other(settings);
  EXPECT_FALSE(other.start());
  EXPECT_NE(std::string::npos, other.error().find("somebody listens there already"))
      << other.error();
  EXPECT_FALSE(other.running());
  enableLce();
}

TEST_F(Kit, OneDaemonOfAProcessHasItsConnections) {
  TestDaemon other;
  EXPECT_FALSE(other.start());
  EXPECT_EQ(0u, other.error().find("another daemon of this process has its connections"))
      << other.error();
  daemon().stop();
  ASSERT_TRUE(other.start()) << other.error();
  ASSERT_EQ(0, createLceClient(onLce));
  EXPECT_TRUE(other.waitForRequest(Service::kLce, "enable"));
  destroySdfClient();
}

TEST_F(Kit, BeginsAnewAfterAStop) {
  EXPECT_TRUE(daemon().start());  // it already runs
  enableLce();
  daemon().stop();
  EXPECT_FALSE(daemon().running());
  EXPECT_EQ(1u, daemon().requests().size());  // the record stays until the next start
  EXPECT_EQ(0u, daemon().connections());
  ASSERT_TRUE(waitFor("lce status -8"));
  clear();
  ASSERT_TRUE(daemon().start()) << daemon().error();
  EXPECT_TRUE(daemon().requests().empty());
  enableLce();
  EXPECT_EQ(1u, daemon().connections());
}

// The actions of the application.

TEST_F(Kit, RequestsAreTold) {
  enableLce();
  const LceReportingCriteria some = criteria();
  const int64_t transaction = lceSetReportingCriteria(&some, onCriteria);
  EXPECT_EQ(0, lcePerformReportingAction(LCE_REPORTING_ACTION_START));
  EXPECT_EQ(0, lceGetLastEstimationReport(onCapacity));
  enableLle();
  EXPECT_EQ(0, lleSetReportingCriteria(5));
  enableLli();

  Request request;
  ASSERT_TRUE(daemon().waitForRequest(Service::kLle, "set-criteria", 1, &request));
  EXPECT_EQ("lle set-criteria criteria=5", request.text());
  ASSERT_TRUE(daemon().waitForRequest(Service::kLce, "set-criteria", 1, &request));
  EXPECT_EQ("17", request.fields["value1"]);
  EXPECT_EQ("LTE", request.fields["network"]);
  EXPECT_NE(std::string::npos, request.text().find(" network=LTE")) << request.text();
  EXPECT_EQ(std::to_string(transaction), request.fields["transaction"]);
  ASSERT_TRUE(daemon().waitForRequest(Service::kLce, "get-last-report"));
  EXPECT_TRUE(waitFor("criteria 1"));
  std::vector<std::string> ofLce;
  for (const Request& each : daemon().requests()) {
    if (each.service == Service::kLce) ofLce.push_back(each.name);
  }
  EXPECT_EQ((std::vector<std::string>{"enable", "set-criteria", "start", "get-last-report"}),
            ofLce);

  EXPECT_TRUE(daemon().waitForConnections(3));
  EXPECT_EQ(3u, daemon().connections());
  destroyLleClient();
  EXPECT_TRUE(daemon().waitForDisconnections(1));
  EXPECT_EQ(2u, daemon().connections());
  EXPECT_TRUE(daemon().waitForRequest(Service::kLle, "disable"));
}

// The daemon's log says what it is about to do, and so holds it up here.
TEST_F(Kit, RequestIsWaitedForUntilItHasBeenDealtWith) {
  daemon().stop();
  std::promise<void> came;
  std::promise<void> mayGoOn;
  Settings settings;
  settings.log = [&](const std::string& line) {
    if (line.find("lce: ENABLE enable=true") == std::string::npos) return;
    came.set_value();
    mayGoOn.get_future().wait();
  };
  TestDaemon other(settings);
  ASSERT_TRUE(other.start()) << other.error();
  ASSERT_EQ(0, createLceClient(onLce));
  came.get_future().wait();
  EXPECT_EQ(1u, other.requests().size());
  EXPECT_FALSE(other.waitForRequest(Service::kLce, "enable", 1, nullptr, Milliseconds(1)));
  mayGoOn.set_value();
  EXPECT_TRUE(other.waitForRequest(Service::kLce, "enable"));
  EXPECT_EQ(1, other.send(Capacity{1}));
  destroySdfClient();
}

TEST_F(Kit, WaitsCountAndEnd) {
  enableLce();
  const Milliseconds soon(1);
  EXPECT_FALSE(daemon().waitForRequest(Service::kLce, "enable", 2, nullptr, soon));
  EXPECT_FALSE(daemon().waitForRequest(Service::kLle, "enable", 1, nullptr, soon));
  EXPECT_FALSE(daemon().waitForConnections(2, soon));
  EXPECT_FALSE(daemon().waitForDisconnections(1, soon));
  EXPECT_EQ(0, createLceClient(onLce));
  EXPECT_TRUE(daemon().waitForRequest(Service::kLce, "enable", 2));
  daemon().forget();
  EXPECT_TRUE(daemon().requests().empty());
  EXPECT_FALSE(daemon().waitForRequest(Service::kLce, "enable", 1, nullptr, soon));
}

TEST(KitBeforeItsStart, SaysSo) {
  TestDaemon daemon;
  EXPECT_EQ(-1, daemon.send(Capacity{}));
  EXPECT_EQ("the daemon is not running", daemon.error());
  EXPECT_FALSE(daemon.comeBack());
  EXPECT_FALSE(daemon.handoff({}));
  EXPECT_FALSE(daemon.waitForRequest(Service::kLce, "enable"));
  EXPECT_FALSE(daemon.waitForConnections(1));
  EXPECT_TRUE(daemon.requests().empty());
  EXPECT_TRUE(daemon.failures().empty());
  daemon.drop();
  daemon.stop();
}

// The messages of the daemon.

TEST_F(Kit, ReportsOfCapacityArriveAsTheyWereSent) {
  EXPECT_EQ(0, daemon().send(Capacity{1}));  // no client has sent a request yet
  enableLce();
  EXPECT_EQ(1, daemon().send(Capacity{50000, 3, false, 700, "NONE"}));
  EXPECT_TRUE(waitFor("capacity 1 50000 3 0 700"));
  EXPECT_EQ(1, daemon().send(Capacity{2000}));
  EXPECT_TRUE(waitFor("capacity 1 2000 7 1 0"));
  EXPECT_EQ(1, daemon().send(Capacity{7, 7, true, 0, "CRITERIA_NOT_SET"}));
  EXPECT_EQ(1, daemon().send(Capacity{3000}));
  EXPECT_TRUE(waitFor("capacity 1 3000 7 1 0"));
  EXPECT_EQ(3u + 1u, lines().size() - 1u);  // plus the status of the enable, and nothing else
  EXPECT_EQ(-1, daemon().send(Capacity{1, 8}));
  EXPECT_EQ("confidence: wrong value: 8", daemon().error());
}

TEST_F(Kit, ReportsOfLatencyArriveAsTheyWereSent) {
  enableLle();
  EXPECT_EQ(1, daemon().send(Latency{11, 12, 13, 14, "5g"}));
  EXPECT_TRUE(waitFor("latency 1 11 13 12 14 3"));
  EXPECT_EQ(1, daemon().send(Latency{1, 2, 3, 4, "lte", false}));
  EXPECT_TRUE(waitFor("latency 0 1 3 2 4 2"));
  EXPECT_EQ(-1, daemon().send(Latency{1, 2, 3, 4, "6g"}));
  EXPECT_EQ("rat: wrong value: 6g", daemon().error());
}

TEST_F(Kit, PhasesOfHandoffsArriveAsTheyWereSent) {
  enableLli();
  const Milliseconds time(200);
  const Milliseconds length(50);
  EXPECT_EQ(1, daemon().send(HandoffPhase{Phase::kEntry, "wcdma", "ehrpd", time, length}));
  EXPECT_TRUE(waitFor("before 0 1 10 200 50"));
  EXPECT_EQ(1, daemon().send(HandoffPhase{Phase::kImminent}));
  EXPECT_TRUE(waitFor("stage 3 3 6 0 0"));
  EXPECT_EQ(1, daemon().send(HandoffPhase{Phase::kStart}));
  EXPECT_TRUE(waitFor("stage 0 3 6 0 0"));
  EXPECT_EQ(1, daemon().send(HandoffPhase{Phase::kSuccess}));
  EXPECT_TRUE(waitFor("stage 1 3 6 0 0"));
  EXPECT_EQ(1, daemon().send(HandoffPhase{Phase::kFailure}));
  EXPECT_TRUE(waitFor("stage 2 3 6 0 0"));
  EXPECT_EQ(1, daemon().send(HandoffPhase{Phase::kExit}));
  EXPECT_TRUE(waitFor("before 1 3 6 0 0"));
}

TEST_F(Kit, StatusesArriveAsTheyWereSent) {
  enableLce();
  EXPECT_EQ(1, daemon().sendStatus(Service::kLce, "SERVICE_DOWN"));
  EXPECT_TRUE(waitFor("lce status -8"));
  EXPECT_EQ(-1, daemon().sendStatus(Service::kLce, "BAD_WEATHER"));
  EXPECT_EQ("no such status: BAD_WEATHER", daemon().error());
}

TEST_F(Kit, WholeHandoffGoesByPhaseAfterPhase) {
  enableLli();
  clear();
  Handoff handoff;
  handoff.target = "wcdma";
  handoff.notice = Milliseconds(300);
  handoff.duration = Milliseconds(40);
  ASSERT_TRUE(daemon().handoff(handoff)) << daemon().error();
  ASSERT_TRUE(waitFor("before 1 3 1 0 0"));
  const std::vector<std::string> all = lines();
  EXPECT_EQ(1, std::count(all.begin(), all.end(), "before 0 3 1 300 40"));
  EXPECT_EQ(1, std::count(all.begin(), all.end(), "stage 0 3 1 0 40"));
  ASSERT_LE(2u, all.size());
  EXPECT_EQ("stage 1 3 1 0 0", all[all.size() - 2]);
  EXPECT_EQ("before 1 3 1 0 0", all.back());
  handoff.target = "6g";
  EXPECT_FALSE(daemon().handoff(handoff));
  EXPECT_EQ(0u, daemon().error().find("no such technology: 6g; there are ")) << daemon().error();
}

TEST_F(Kit, HandoffToWhereTheDeviceIsIsRefused) {
  enableLli();
  clear();
  const Milliseconds notice(100);
  const Milliseconds duration(20);
  EXPECT_FALSE(daemon().handoff({"lte", notice, duration}));
  EXPECT_EQ("the device is on lte already", daemon().error());
  ASSERT_TRUE(daemon().handoff({"5g", notice, duration})) << daemon().error();
  ASSERT_TRUE(waitFor("before 1 3 6 0 0"));
  EXPECT_FALSE(daemon().handoff({"5g", notice, duration}));
  EXPECT_EQ("the device is on 5g already", daemon().error());
  const std::vector<std::string> all = lines();
  EXPECT_EQ(0, std::count(all.begin(), all.end(), "before 0 3 3 100 20"));
  EXPECT_EQ(1, std::count(all.begin(), all.end(), "before 0 3 6 100 20"));
}

TEST_F(Kit, HandoffsMayFailOrBeCalledOff) {
  enableLli();
  for (const auto& [outcome, last] :
       {std::pair(Handoff::Outcome::kFailure, "stage 2 3 6 0 0"),
        std::pair(Handoff::Outcome::kCalledOff, "before 1 3 6 0 0")}) {
    ASSERT_TRUE(daemon().handoff({"5g", Milliseconds(100), Milliseconds(20), outcome}));
    EXPECT_TRUE(waitFor(last)) << last;
  }
}

TEST_F(Kit, RateIsHeldAndGoesItsWay) {
  enableLce();
  const LceReportingCriteria some = criteria();
  EXPECT_LT(0, lceSetReportingCriteria(&some, onCriteria));
  EXPECT_EQ(0, lcePerformReportingAction(LCE_REPORTING_ACTION_START));
  ASSERT_TRUE(daemon().waitForRequest(Service::kLce, "start"));
  const auto reaches = [](uint32_t rate) {
    const std::string start = "capacity 1 " + std::to_string(rate) + " ";
    return waitFor([&start](const std::string& line) { return line.find(start) == 0; });
  };
  daemon().setRate(50000);
  daemon().setReportInterval(Milliseconds(20));
  EXPECT_TRUE(reaches(50000));
  daemon().setRate(50000, 2000, Milliseconds(200));
  EXPECT_TRUE(reaches(2000));
}

// Events of the daemon.

TEST_F(Kit, DropClosesConnectionsAndTheDaemonStays) {
  enableLce();
  daemon().drop();
  EXPECT_TRUE(waitFor("lce status -8"));
  EXPECT_TRUE(daemon().waitForDisconnections(1));
  clear();
  enableLce();
  EXPECT_TRUE(daemon().waitForConnections(2));
}

TEST_F(Kit, VanishedDaemonIsNobodyUntilItComesBack) {
  enableLce();
  daemon().vanish();
  EXPECT_TRUE(waitFor("lce status -8"));
  EXPECT_FALSE(std::filesystem::exists(daemon().socketPath()));
  EXPECT_TRUE(daemon().waitForDisconnections(1));
  EXPECT_EQ(0u, daemon().connections());
  clear();
  EXPECT_EQ(0, createLceClient(onLce));  // the library tries to connect for five seconds
  ASSERT_TRUE(daemon().comeBack()) << daemon().error();
  EXPECT_TRUE(waitFor("lce status 0"));
}

TEST_F(Kit, DaemonCannotComeBackWhereAnotherIs) {
  daemon().vanish();
  Settings settings;
  settings.redirect = false;
  settings.socketPath = daemon().socketPath();
  TestDaemon other(settings);
  ASSERT_TRUE(other.start()) << other.error();
  EXPECT_FALSE(daemon().comeBack());
  EXPECT_EQ("somebody else has the socket now: " + daemon().socketPath(), daemon().error());
}

// The answers of the daemon.

TEST_F(Kit, AnswersComeLate) {
  enableLce();
  clear();
  const Milliseconds late(300);
  daemon().delayAnswers(late);
  const auto before = std::chrono::steady_clock::now();
  const LceReportingCriteria some = criteria();
  EXPECT_LT(0, lceSetReportingCriteria(&some, onCriteria));
  EXPECT_TRUE(waitFor("criteria 1"));
  EXPECT_GE(std::chrono::steady_clock::now() - before, late);
}

TEST_F(Kit, AnswersMayNotCome) {
  daemon().setAnswering(false);
  EXPECT_EQ(0, createLceClient(onLce));
  ASSERT_TRUE(daemon().waitForRequest(Service::kLce, "enable"));
  daemon().setAnswering(true);  // for later requests
  enableLce();
  // An answer to the first request would have come before this one.
  EXPECT_EQ(1, daemon().send(Capacity{1}));
  ASSERT_TRUE(waitFor("capacity 1 1 7 1 0"));
  EXPECT_EQ((std::vector<std::string>{"lce status 0", "capacity 1 1 7 1 0"}), lines());
}

TEST_F(Kit, RefusedRequestsAreAnsweredSo) {
  enableLce();
  const LceReportingCriteria some = criteria();
  ASSERT_TRUE(daemon().refuse({Service::kLce, "set-criteria", "TYPE_MISMATCH"}));
  EXPECT_LT(0, lceSetReportingCriteria(&some, onCriteria));
  EXPECT_TRUE(waitFor("criteria 3"));
  ASSERT_TRUE(daemon().refuse({Service::kLce, "set-criteria", "NOT_SUPPORTED", 2}));
  clear();
  for (int i = 0; i < 3; ++i) EXPECT_LT(0, lceSetReportingCriteria(&some, onCriteria));
  EXPECT_TRUE(waitFor("criteria 1"));
  EXPECT_EQ(3u, lines().size());  // two statuses came before
  EXPECT_FALSE(daemon().refuse({Service::kLle, "set-criteria", "TYPE_MISMATCH"}));
  EXPECT_NE("", daemon().error());
}

TEST_F(Kit, LogTellsWhatHappens) {
  Recorder<std::string> log;
  Settings settings;
  settings.redirect = false;
  settings.log = [&](const std::string& line) { log.add(line); };
  TestDaemon other(settings);
  ASSERT_TRUE(other.start());
  other.stop();
  ASSERT_LE(1u, log.count());
  EXPECT_EQ("listening on " + other.socketPath(), log.all().front());
}

TEST(KitPatience, IsWhatTheEnvironmentSays) {
  const char* const before = getenv("ORBSIM_TIMEOUT");
  const std::string saved = before != nullptr ? before : "";
  const auto with = [](const char* seconds) {
    setenv("ORBSIM_TIMEOUT", seconds, 1);
    return patience();
  };
  EXPECT_EQ(std::chrono::seconds(7), with("7"));
  EXPECT_EQ(std::chrono::seconds(20), with("soon"));
  EXPECT_EQ(std::chrono::seconds(20), with("-1"));
  unsetenv("ORBSIM_TIMEOUT");
  EXPECT_EQ(std::chrono::seconds(20), patience());
  if (before != nullptr) setenv("ORBSIM_TIMEOUT", saved.c_str(), 1);
}

}  // namespace
