// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
//
// The application and a daemon in one process. Each test is one of four questions: is the daemon
// there, and if not, why; what does it send; what does the application do when something happens to
// the link or the daemon; and what when answers come late or are refused.
#include "link_aware.h"

#include <orbsim/gtest.h>

#include <algorithm>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <string>
#include <vector>

namespace {

using namespace orbsim::testkit;

// All that the application has told so far. Written by its threads, read by the test; `lock` guards
// the views.
class Views {
 public:
  using Condition = std::function<bool(const LinkView&)>;

  void clear() {
    const std::lock_guard<std::mutex> guard(mLock);
    mViews.clear();
  }
  void add(const LinkView& view) {
    const std::lock_guard<std::mutex> guard(mLock);
    mViews.push_back(view);
    mAdded.notify_all();
  }
  // Until there is such a view, from the first one on.
  bool waitFor(const Condition& condition) {
    std::unique_lock<std::mutex> guard(mLock);
    return mAdded.wait_for(guard, patience(),
                           [&] { return std::any_of(mViews.begin(), mViews.end(), condition); });
  }
  bool waitFor(LinkDaemon daemon) {
    return waitFor([daemon](const LinkView& view) { return view.daemon == daemon; });
  }

 private:
  std::mutex mLock;
  std::condition_variable mAdded;
  std::vector<LinkView> mViews;
};

Views views;  // the application's callback has no room for more

// A daemon, and the application beside it once start() was called.
class LinkAware : public DaemonTest {
 protected:
  void TearDown() override {
    if (mStarted) linkAwareStop();
    DaemonTest::TearDown();
  }

  void start() {
    views.clear();
    ASSERT_TRUE(linkAwareStart([](const LinkView* view) { views.add(*view); }));
    mStarted = true;
  }
  // Until it is connected and has asked for everything.
  void startAndConnect() {
    start();
    ASSERT_TRUE(daemon().waitForRequest(Service::kLce, "start"));
    ASSERT_TRUE(daemon().waitForRequest(Service::kLli, "register"));
  }

 private:
  bool mStarted = false;
};

// Is the daemon there, and if not, why?

TEST_F(LinkAware, FindsTheDaemon) {
  start();
  EXPECT_TRUE(views.waitFor(LINK_DAEMON_THERE));
}

TEST_F(LinkAware, SaysThatNoDaemonIsThere) {
  daemon().vanish();
  start();
  EXPECT_TRUE(views.waitFor(LINK_DAEMON_ABSENT));  // the library tries for five seconds
}

TEST_F(LinkAware, SaysThatTheDaemonIsSilent) {
  daemon().setAnswering(false);
  start();
  EXPECT_TRUE(views.waitFor(LINK_DAEMON_SILENT));
  EXPECT_FALSE(daemon().requests().empty());  // it was asked
}

// What does it send?

TEST_F(LinkAware, AsksForReportsAndTakesThem) {
  startAndConnect();
  std::vector<std::string> ofLce;
  for (const Request& request : daemon().requests()) {
    if (request.service == Service::kLce) ofLce.push_back(request.name);
  }
  EXPECT_EQ((std::vector<std::string>{"enable", "set-criteria", "start"}), ofLce);
  EXPECT_EQ(1, daemon().send(Capacity{12345}));
  EXPECT_TRUE(views.waitFor([](const LinkView& view) { return view.rate == 12345; }));
  Capacity invalid{99999};
  invalid.error = "NO_ESTIMATE";
  EXPECT_EQ(1, daemon().send(invalid));
  EXPECT_EQ(1, daemon().send(Capacity{54321}));
  EXPECT_TRUE(
      views.waitFor([](const LinkView& view) { return view.rate == 54321 && view.reports == 2; }));
}

// What does the application do when something happens?

TEST_F(LinkAware, HoldsWhileAHandoffInterruptsTheLink) {
  startAndConnect();
  using Phase = HandoffPhase::Phase;
  daemon().send(HandoffPhase{Phase::kEntry});
  daemon().send(HandoffPhase{Phase::kImminent, "lte", "5g", Milliseconds(200), Milliseconds(50)});
  EXPECT_TRUE(views.waitFor([](const LinkView& view) { return view.holding; }));
  views.clear();
  daemon().send(HandoffPhase{Phase::kSuccess});
  EXPECT_TRUE(views.waitFor([](const LinkView& view) { return !view.holding; }));
}

TEST_F(LinkAware, FindsADaemonThatWasGone) {
  startAndConnect();
  daemon().vanish();
  ASSERT_TRUE(views.waitFor(LINK_DAEMON_ABSENT));
  ASSERT_TRUE(daemon().comeBack()) << daemon().error();
  EXPECT_TRUE(views.waitFor([](const LinkView& view) { return view.connections == 2; }));
  // A daemon that is back knows nothing: it is to be told everything anew.
  EXPECT_TRUE(daemon().waitForRequest(Service::kLce, "start", 2));
  EXPECT_TRUE(daemon().waitForRequest(Service::kLli, "register", 2));
}

TEST_F(LinkAware, LowersItsQualityWhenTheRateFallsFrom50To2) {
  startAndConnect();
  daemon().send(Capacity{50000});
  EXPECT_TRUE(views.waitFor([](const LinkView& view) { return view.highQuality; }));
  daemon().send(Capacity{2000});
  EXPECT_TRUE(
      views.waitFor([](const LinkView& view) { return view.rate == 2000 && !view.highQuality; }));
}

// The same as a course of time: a scenario.
TEST_F(LinkAware, KeepsUpWithAScenario) {
  ASSERT_NO_FATAL_FAILURE(play(R"({
    "begin": ["lce"], "interval": 0.1, "model": {"handoffs": false, "rate": 50},
    "timeline": [{"at": 0.5, "rate": {"to": 2, "over": 0.5}}, {"at": 1.2, "vanish": 0.5}],
    "expect": [{"reconnects": {"after": 1.2, "within": 15}},
               {"sends": {"service": "lce", "request": "start", "after": 1.2, "within": 15}},
               {"at-most": {"requests": 10}}]})"));
  start();
  expectAsPlayed();
}

// What when answers come late, or are refused?

TEST_F(LinkAware, WaitsForALateAnswer) {
  daemon().delayAnswers(Milliseconds(1500));
  start();
  EXPECT_TRUE(views.waitFor(LINK_DAEMON_SILENT));
  EXPECT_TRUE(views.waitFor(LINK_DAEMON_THERE));
  Request enable;
  EXPECT_TRUE(daemon().waitForRequest(Service::kLce, "set-criteria"));
  EXPECT_FALSE(daemon().waitForRequest(Service::kLce, "enable", 2, &enable, Milliseconds(0)));
}

class RefusedCriteria : public LinkAware, public testing::WithParamInterface<const char*> {};

TEST_P(RefusedCriteria, AreReplacedByTheDaemonsOwn) {
  Refusal refusal;
  refusal.with = GetParam();
  ASSERT_TRUE(daemon().refuse(refusal)) << daemon().error();
  start();
  EXPECT_TRUE(views.waitFor([](const LinkView& view) { return view.refused; }));
  Request criteria;
  ASSERT_TRUE(daemon().waitForRequest(Service::kLce, "set-criteria", 2, &criteria));
  EXPECT_EQ("0", criteria.fields["value1"]) << criteria.text();
  EXPECT_TRUE(daemon().waitForRequest(Service::kLce, "start"));
}

INSTANTIATE_TEST_SUITE_P(LinkAware, RefusedCriteria,
                         testing::Values("NOT_SUPPORTED", "TYPE_MISMATCH", "INVALID_ARGUMENTS"),
                         [](const auto& info) { return std::string(info.param); });

}  // namespace
