// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
// The screen of orbctl watch, and the classes behind it.
#include <gtest/gtest.h>
#include <poll.h>

#include <thread>

#include "orbctl/EventQueue.h"
#include "orbctl/Lines.h"
#include "orbctl/Names.h"
#include "orbctl/Units.h"
#include "orbctl/View.h"

using namespace orbctl;
using std::chrono::milliseconds;

namespace {

class OrbctlView : public testing::Test {
 protected:
  OrbctlView() {
    mSituation.services.assign(kAllServices.begin(), kAllServices.end());
    mSituation.states.fill(Following::State::kUp);
  }
  void take(Service service, const EventData& data) {
    mModel.take({service, 0, mNow, WallClock::time_point{}, data});
  }
  void takeCapacity(uint32_t rate, LceLinkDirection direction = LCE_LINK_DIRECTION_DOWNLINK) {
    take(Service::kLce, CapacityEvent{LCE_ESTIMATION_REPORT_STATUS_SUCCESS,
                                      {rate, LCE_CONFIDENCE_LEVEL_L5, direction, 6000}});
  }
  void takeLatency(uint64_t up, uint64_t down) {
    LleEstimationReport report = {};
    report.ulLatencyEstimation = up;
    report.dlLatencyEstimation = down;
    report.ulVarianceEstimation = 4000000;
    report.rat = SDL_ACCESS_NETWORK_TYPE_LTE;
    take(Service::kLle, LatencyEvent{true, report});
  }
  void takeHandoff(LliHandoffState state, uint64_t toInterruption, uint64_t duration) {
    take(Service::kLli,
         HandoffEvent{LLI_HANDOFF_IND_TYPE_HANDOFF,
                      LLI_PRE_HANDOFF_STATE_ENTRY,
                      {state, LLI_RAT_3GPP_LTE, LLI_RAT_3GPP_5G, toInterruption, duration}});
  }
  std::vector<std::string> screen() const {
    std::vector<std::string> texts;
    for (const Row& row : screenOf(mModel, mSituation, mCanvas, mNow, WallClock::now()))
      texts.push_back(row.plainText());
    return texts;
  }
  std::string all() const {
    std::string text;
    for (const std::string& row : screen()) text += row + "\n";
    return text;
  }
  bool shows(const std::string& part) const { return all().find(part) != std::string::npos; }

  Clock::time_point mNow = Clock::time_point{} + std::chrono::hours(1);
  Model mModel{mNow};
  Situation mSituation;
  Canvas mCanvas;
};

TEST_F(OrbctlView, ValuesAreInUnitsOfPeople) {
  takeCapacity(48000);
  takeCapacity(5200, LCE_LINK_DIRECTION_UPLINK);
  takeLatency(30400, 9990);
  EXPECT_TRUE(shows("  down 48.0 Mbit/s")) << all();
  EXPECT_TRUE(shows("  up   5.20 Mbit/s")) << all();
  EXPECT_TRUE(shows("  confidence 5 of 7   uplink queue 6.00 kB")) << all();
  EXPECT_TRUE(shows("  up   30.4 ms \u00b12.00")) << all();
  EXPECT_TRUE(shows("  down 9.99 ms \u00b10.00")) << all();
  EXPECT_TRUE(shows("  network LTE")) << all();
}

TEST_F(OrbctlView, EveryRowFitsEveryTerminal) {
  takeCapacity(48000);
  takeLatency(30400, 12100);
  for (int i = 0; i < 40; ++i) takeHandoff(LLI_HANDOFF_STATE_IMMINENT, 1200, 80);
  for (size_t columns = 1; columns <= 200; ++columns) {
    for (size_t rows = 1; rows <= 60; rows += 1 + columns % 5) {
      mCanvas = {columns, rows, columns % 2 == 0};
      const auto drawn = screen();
      EXPECT_GE(rows, drawn.size());
      for (const std::string& row : drawn) EXPECT_GE(columns, columnsOf(row)) << row;
    }
  }
}

TEST_F(OrbctlView, NarrowScreenHasValuesAndWideOneBars) {
  for (uint32_t rate = 1; rate <= 8; ++rate) takeCapacity(rate * 1000);
  mCanvas.columns = 30;
  EXPECT_TRUE(shows("  down 8.00 Mbit/s\n")) << all();
  mCanvas.columns = 40;
  EXPECT_TRUE(shows("  down 8.00 Mbit/s        \u2582\u2583\u2584\u2585\u2586\u2587\u2588\u2588\n"))
      << all();
  EXPECT_TRUE(shows("q quit\n")) << all();
  mCanvas.columns = 160;
  EXPECT_TRUE(shows("q quit   units: Mbit/s, ms")) << all();
}

TEST_F(OrbctlView, LowScreenKeepsTheServices) {
  takeHandoff(LLI_HANDOFF_STATE_SUCCESS, 0, 0);
  mCanvas.rows = 12;
  EXPECT_EQ(12u, screen().size());
  EXPECT_TRUE(shows("LLI handoff")) << all();
}

TEST_F(OrbctlView, HandoffCountsDown) {
  takeHandoff(LLI_HANDOFF_STATE_IMMINENT, 1500, 80);
  EXPECT_TRUE(shows("  LTE \u2192 5G  imminent\n")) << all();
  EXPECT_TRUE(shows("  interruption in 1.5 s, for 80 ms")) << all();
  mNow += milliseconds(1000);
  EXPECT_TRUE(shows("  interruption in 500 ms, for 80 ms")) << all();
  mNow += milliseconds(1000);
  EXPECT_TRUE(shows("  interruption due, for 80 ms")) << all();
  takeHandoff(LLI_HANDOFF_STATE_START, 0, 80);
  EXPECT_TRUE(shows("  interrupted, over in 80 ms")) << all();
  mNow += milliseconds(100);
  EXPECT_TRUE(shows("  interrupted for longer than 80 ms")) << all();
  takeHandoff(LLI_HANDOFF_STATE_SUCCESS, 0, 0);
  mNow += milliseconds(2500);
  EXPECT_TRUE(shows("success\n  2.5 s ago")) << all();
}

TEST_F(OrbctlView, NewsHaveAPhaseOnceAndAreBriefOnANarrowScreen) {
  for (uint64_t left = 800; left >= 200; left -= 200)
    takeHandoff(LLI_HANDOFF_STATE_IMMINENT, left, 80);
  takeHandoff(LLI_HANDOFF_STATE_START, 0, 80);
  EXPECT_EQ(2u, mModel.news().size());
  EXPECT_TRUE(shows(" lli  LTE to 5G: imminent, interruption in 200 ms, for 80 ms\n")) << all();
  mCanvas.columns = 40;
  EXPECT_TRUE(shows(":00 lli  LTE to 5G: imminent\n")) << all();
}

TEST_F(OrbctlView, ValuesOfAServiceThatIsAwayArePale) {
  takeCapacity(48000);
  const auto styleOfValue = [&] {
    for (const Row& row : screenOf(mModel, mSituation, mCanvas, mNow, WallClock::now())) {
      for (const Span& span : row.spans()) {
        if (span.text == "48.0 Mbit/s") return span.style;
      }
    }
    return Style::kBad;
  };
  EXPECT_EQ(Style::kCapacity, styleOfValue());
  mSituation.states[0] = Following::State::kAway;
  EXPECT_EQ(Style::kDim, styleOfValue());
}

TEST_F(OrbctlView, TitleTellsOfTheDaemon) {
  EXPECT_EQ(0u, all().find("orbctl  daemon is there")) << all();
  mSituation.states.fill(Following::State::kAway);
  mSituation.nextAttempt = mNow + milliseconds(1200);
  EXPECT_EQ(0u, all().find("orbctl  daemon is away, next try in 1.2 s")) << all();
  mSituation.states[0] = Following::State::kAsking;
  EXPECT_EQ(0u, all().find("orbctl  asking the daemon ...")) << all();
  mSituation.statuses[0] = STATUS_SERVICE_DOWN;
  EXPECT_EQ(0u, all().find("orbctl  daemon is away, trying ...")) << all();
}

TEST_F(OrbctlView, ServiceThatIsRefusedSaysWith) {
  mSituation.states[1] = Following::State::kRefused;
  mSituation.statuses[1] = STATUS_NOT_SUPPORTED;
  EXPECT_TRUE(shows("LLE latency   refused: NOT_SUPPORTED")) << all();
}

TEST_F(OrbctlView, RateIsThatOfTheLastSeconds) {
  for (int i = 0; i < 40; ++i) {
    mNow += milliseconds(500);
    takeCapacity(1000);
  }
  EXPECT_DOUBLE_EQ(2.0, mModel.rateOf(Service::kLce, mNow));
  EXPECT_DOUBLE_EQ(0.0, mModel.rateOf(Service::kLle, mNow));
  mNow += std::chrono::seconds(6);
  EXPECT_DOUBLE_EQ(0.0, mModel.rateOf(Service::kLce, mNow));
}

TEST_F(OrbctlView, AbsenceOfTheDaemonIsAGapInTheBars) {
  takeCapacity(8000);
  take(Service::kLce, DaemonEvent{false});
  take(Service::kLce, DaemonEvent{false});
  takeCapacity(8000);
  EXPECT_EQ("\u2588 \u2588", sparkline(mModel.downlinkCapacity().values(), 10, true));
  EXPECT_EQ("# #", sparkline(mModel.downlinkCapacity().values(), 10, false));
  EXPECT_EQ(" #", sparkline(mModel.downlinkCapacity().values(), 2, false));
}

TEST(OrbctlUnits, AreWhatPeopleRead) {
  EXPECT_EQ("0.85 Mbit/s", mbitText(850));
  EXPECT_EQ("1200.0 Mbit/s", mbitText(1200000));
  EXPECT_EQ("512 B", bytesText(512));
  EXPECT_EQ("6.00 kB", bytesText(6000));
  EXPECT_EQ("12.5 MB", bytesText(12500000));
  EXPECT_EQ("80 ms", durationText(80));
  EXPECT_EQ("61.5 s", durationText(61500));
}

TEST(OrbctlNames, AreReadWhateverTheirCase) {
  EXPECT_EQ(SDL_ACCESS_NETWORK_TYPE_NR5G, valueOf(kNetworkWords, "Nr5G"));
  EXPECT_EQ(LCE_REPORTING_ACTION_RESET, valueOf(kActionWords, "reset"));
  EXPECT_EQ(std::nullopt, valueOf(kNetworkWords, "6g"));
  for (const auto& word : kRatWords) EXPECT_STREQ(word.first, nameOf(word.second));
  EXPECT_STREQ("unknown", nameOf(static_cast<LliRat>(99)));
  EXPECT_STREQ("unknown", nameOf(static_cast<status_e>(99)));
}

TEST(OrbctlLines, AnEstimateThatIsNoneSaysWhy) {
  Event event;
  event.data = CapacityEvent{LCE_ESTIMATION_REPORT_STATUS_CRITERIA_NOT_SET, {}};
  EXPECT_EQ(" lce  no estimate: CRITERIA_NOT_SET", lineOf(event).plainText().substr(12));
  event.data = LatencyEvent{false, {}};
  event.service = Service::kLle;
  EXPECT_EQ(" lle  no estimate", lineOf(event).plainText().substr(12));
}

TEST(OrbctlEventQueue, WakesItsReaderAndKeepsTheOrder) {
  EventQueue queue;
  const auto readable = [&](int patience) {
    pollfd waited = {queue.fd(), POLLIN, 0};
    return poll(&waited, 1, patience) == 1;
  };
  EXPECT_FALSE(readable(0));
  std::thread other([&] {
    for (uint32_t i = 0; i < 1000; ++i) {
      Event event;
      event.generation = i;
      queue.push(event);
    }
  });
  std::vector<Event> taken;
  size_t lost = 0;
  while (taken.size() < 1000 && readable(20000)) {
    const auto some = queue.take(lost);
    taken.insert(taken.end(), some.begin(), some.end());
  }
  other.join();
  ASSERT_EQ(1000u, taken.size());
  for (uint32_t i = 0; i < 1000; ++i) EXPECT_EQ(i, taken[i].generation);
  (void)queue.take(lost);
  EXPECT_FALSE(readable(0));
}

TEST(OrbctlEventQueue, TellsHowManyItHasLost) {
  EventQueue queue;
  for (size_t i = 0; i < EventQueue::kMost + 3; ++i) queue.push({});
  size_t lost = 0;
  EXPECT_EQ(EventQueue::kMost, queue.take(lost).size());
  EXPECT_EQ(3u, lost);
  EXPECT_EQ(0u, queue.take(lost).size());
  EXPECT_EQ(0u, lost);
}

}  // namespace
