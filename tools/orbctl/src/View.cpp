// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "orbctl/View.h"

#include <algorithm>
#include <cstdio>

#include "orbctl/Lines.h"
#include "orbctl/Names.h"
#include "orbctl/Record.h"
#include "orbctl/Units.h"

namespace orbctl {
namespace {

using std::chrono::milliseconds;

constexpr size_t kValueColumn = 7;  // after "  down "
constexpr size_t kBarsColumn = 26;  // after "30.4 ms ±3.2" and "480.0 Mbit/s"
constexpr size_t kFewestBars = 8;

uint64_t millisecondsUntil(Clock::time_point at, Clock::time_point now) {
  return at <= now ? 0 : static_cast<uint64_t>(std::chrono::ceil<milliseconds>(at - now).count());
}

// Draws one picture of the screen; lives only during that time.
class Painter {
 public:
  Painter(const Model& model, const Situation& situation, const Canvas& canvas,
          Clock::time_point now, WallClock::time_point wall)
      : mModel(model), mSituation(situation), mCanvas(canvas), mNow(now), mWall(wall) {}

  std::vector<Row> paint() const {
    const std::vector<std::vector<Row>> blocks = blocksOfServices();
    size_t needed = 1;
    for (const auto& block : blocks) needed += block.size();
    // Blank lines between the blocks are removed first.
    const bool airy = needed + blocks.size() < mCanvas.rows;
    std::vector<Row> rows = {titleRow()};
    for (const auto& block : blocks) {
      if (airy) rows.emplace_back();
      rows.insert(rows.end(), block.begin(), block.end());
    }
    addLines(rows);
    if (rows.size() > mCanvas.rows) rows.resize(mCanvas.rows);
    for (Row& row : rows) row = row.cut(mCanvas.columns);
    return rows;
  }

 private:
  bool narrow() const { return mCanvas.columns < 60; }
  const char* arrow() const { return mCanvas.unicode ? " \u2192 " : " to "; }
  const char* plusMinus() const { return mCanvas.unicode ? " \u00b1" : " +-"; }

  std::vector<std::vector<Row>> blocksOfServices() const {
    std::vector<std::vector<Row>> blocks;
    for (const Service service : mSituation.services) {
      if (service == Service::kLce) blocks.push_back(capacityBlock());
      if (service == Service::kLle) blocks.push_back(latencyBlock());
      if (service == Service::kLli) blocks.push_back(handoffBlock());
    }
    return blocks;
  }

  // The rest of the screen: the last events, and in the last row the keys.
  void addLines(std::vector<Row>& rows) const {
    const size_t bottom = mCanvas.rows - 1;
    const auto& news = mModel.news();
    if (rows.size() + 3 <= bottom && !news.empty()) {
      rows.emplace_back();
      const size_t shown = std::min(bottom - rows.size(), news.size());
      std::for_each(news.end() - static_cast<std::ptrdiff_t>(shown), news.end(),
                    [&](const Event& event) { rows.push_back(lineOf(event, narrow())); });
    }
    if (rows.size() > bottom) return;
    rows.resize(bottom);
    rows.emplace_back(narrow() ? "q quit" : "q quit   units: Mbit/s, ms", Style::kDim);
  }

  Row titleRow() const {
    Row row("orbctl", Style::kTitle);
    row.add("  ").add(daemonRow());
    const std::string time = localTimeText(mWall).substr(0, 8);
    if (row.width() + 1 + time.size() <= mCanvas.columns)
      row.fillTo(mCanvas.columns - time.size()).add(time, Style::kDim);
    return row;
  }

  bool any(Following::State state) const {
    return std::any_of(mSituation.services.begin(), mSituation.services.end(),
                       [&](Service each) { return mSituation.states[indexOf(each)] == state; });
  }

  bool wasLost() const {
    return std::any_of(mSituation.services.begin(), mSituation.services.end(), [&](Service each) {
      return mSituation.statuses[indexOf(each)] == STATUS_SERVICE_DOWN;
    });
  }

  Row daemonRow() const {
    if (any(Following::State::kUp) || any(Following::State::kRefused))
      return Row("daemon is there", Style::kGood);
    if (any(Following::State::kAsking) && !wasLost())
      return Row("asking the daemon ...", Style::kWarn);
    Row row("daemon is away", Style::kBad);
    if (any(Following::State::kAsking)) return row.add(", trying ...");
    const uint64_t left =
        mSituation.nextAttempt ? millisecondsUntil(*mSituation.nextAttempt, mNow) : 0;
    if (left > 0) row.add(", next try in " + durationText(left));
    return row;
  }

  // "LCE capacity   works            2.0/s"
  Row headOf(Service service, const char* title) const {
    Row row(title, Style::kTitle);
    row.fillTo(14);
    const auto status = mSituation.statuses[indexOf(service)];
    switch (mSituation.states[indexOf(service)]) {
      case Following::State::kUp:
        row.add("works", Style::kGood);
        break;
      case Following::State::kAsking:
        row.add("asking ...", Style::kWarn);
        break;
      case Following::State::kRefused:
        row.add("refused", Style::kBad);
        if (status) row.add(std::string(": ") + nameOf(*status));
        break;
      case Following::State::kAway:
        row.add("away", Style::kBad);
        break;
    }
    char rate[32];
    std::snprintf(rate, sizeof rate, "%.1f/s", mModel.rateOf(service, mNow));
    const std::string text = rate;
    if (row.width() + 1 + text.size() <= mCanvas.columns)
      row.fillTo(mCanvas.columns - text.size()).add(text, Style::kDim);
    return row;
  }

  // Name, value and bars: "  down  48.0 Mbit/s  ▃▄▅▆".
  // Old values of a service that is away are dimmed.
  Row valueRow(Service service, const char* name, const std::string& value, Style fresh,
               const Series& series) const {
    const bool works = mSituation.states[indexOf(service)] == Following::State::kUp;
    const Style style = works ? fresh : Style::kDim;
    Row row(name, Style::kDim);
    row.fillTo(kValueColumn).add(value, style);
    const size_t column = std::max(kBarsColumn, row.width() + 1);
    if (column + kFewestBars > mCanvas.columns) return row;
    row.fillTo(column);
    return row.add(sparkline(series.values(), mCanvas.columns - column, mCanvas.unicode), style);
  }

  std::string rateOf(LceLinkDirection direction) const {
    const auto& event = mModel.capacity(direction);
    return event ? mbitText(event->report.rate) : "-";
  }

  std::vector<Row> capacityBlock() const {
    std::vector<Row> rows = {headOf(Service::kLce, "LCE capacity"),
                             valueRow(Service::kLce, "  down", rateOf(LCE_LINK_DIRECTION_DOWNLINK),
                                      Style::kCapacity, mModel.downlinkCapacity()),
                             valueRow(Service::kLce, "  up", rateOf(LCE_LINK_DIRECTION_UPLINK),
                                      Style::kCapacity, mModel.uplinkCapacity())};
    const auto& last = mModel.capacity();
    if (!last) {
      rows.emplace_back("  no report yet", Style::kDim);
    } else if (last->status != LCE_ESTIMATION_REPORT_STATUS_SUCCESS) {
      rows.emplace_back(std::string("  no estimate: ") + nameOf(last->status), Style::kWarn);
    } else {
      const std::string level =
          std::to_string(static_cast<int>(last->report.confidenceLevel)) + " of 7";
      Row row("  confidence ", Style::kDim);
      row.add(level).add(narrow() ? "  queue " : "   uplink queue ", Style::kDim);
      rows.push_back(row.add(bytesText(last->report.queueSizeUL)));
    }
    return rows;
  }

  std::vector<Row> latencyBlock() const {
    const auto& last = mModel.latency();
    const bool valid = last && last->valid;
    const auto value = [&](uint64_t latency, uint64_t variance) {
      return valid ? msText(static_cast<double>(latency)) + plusMinus() + deviationText(variance)
                   : std::string("-");
    };
    const LleEstimationReport report = valid ? last->report : LleEstimationReport{};
    std::vector<Row> rows = {
        headOf(Service::kLle, "LLE latency"),
        valueRow(Service::kLle, "  down",
                 value(report.dlLatencyEstimation, report.dlVarianceEstimation), Style::kLatency,
                 mModel.downlinkLatency()),
        valueRow(Service::kLle, "  up",
                 value(report.ulLatencyEstimation, report.ulVarianceEstimation), Style::kLatency,
                 mModel.uplinkLatency())};
    if (valid) {
      rows.push_back(Row("  network ", Style::kDim).add(shortNameOf(report.rat)));
    } else {
      rows.emplace_back(last ? "  no estimate" : "  no report yet",
                        last ? Style::kWarn : Style::kDim);
    }
    return rows;
  }

  std::vector<Row> handoffBlock() const {
    std::vector<Row> rows = {headOf(Service::kLli, "LLI handoff")};
    const auto& last = mModel.handoff();
    if (!last) {
      rows.emplace_back("  no indication yet", Style::kDim);
      return rows;
    }
    Row row("  ");
    row.add(std::string(shortNameOf(last->info.sourceRat)) + arrow() +
            shortNameOf(last->info.targetRat) + "  ");
    rows.push_back(row.add(phaseOf(*last), styleOf(*last)));
    rows.push_back(countdownRow(*last));
    return rows;
  }

  Row countdownRow(const HandoffEvent& event) const {
    const auto from = mModel.handoffAt();
    const auto left = [&](uint64_t whole) {
      const auto most = static_cast<uint64_t>(milliseconds(std::chrono::hours(24)).count());
      return millisecondsUntil(from + milliseconds(std::min(whole, most)), mNow);
    };
    const LliInterruptInfo& info = event.info;
    const bool handoff = event.type == LLI_HANDOFF_IND_TYPE_HANDOFF;
    const std::string length = durationText(info.estimatedInterruptionDuration);
    if (handoff && info.handoffState == LLI_HANDOFF_STATE_START) {
      const uint64_t rest = left(info.estimatedInterruptionDuration);
      Row row("  interrupted", Style::kBad);
      return row.add(rest > 0 ? ", over in " + durationText(rest) : " for longer than " + length);
    }
    if (info.estimatedTimeToInterruption > 0 && !isOver(event)) {
      const uint64_t rest = left(info.estimatedTimeToInterruption);
      Row row("  interruption ", Style::kWarn);
      row.add(rest > 0 ? "in " + durationText(rest) : "due", Style::kWarn);
      return row.add(", for " + length);
    }
    const auto since = std::chrono::floor<milliseconds>(mNow - from).count();
    return Row("  " + durationText(static_cast<uint64_t>(std::max<int64_t>(since, 0))) + " ago",
               Style::kDim);
  }

  static bool isOver(const HandoffEvent& event) {
    if (event.type == LLI_HANDOFF_IND_TYPE_PRE_HANDOFF)
      return event.preState == LLI_PRE_HANDOFF_STATE_EXIT;
    return event.info.handoffState == LLI_HANDOFF_STATE_SUCCESS ||
           event.info.handoffState == LLI_HANDOFF_STATE_FAILURE;
  }

  const Model& mModel;
  const Situation& mSituation;
  const Canvas& mCanvas;
  const Clock::time_point mNow;
  const WallClock::time_point mWall;
};

}  // namespace

std::vector<Row> screenOf(const Model& model, const Situation& situation, const Canvas& canvas,
                          Clock::time_point now, WallClock::time_point wall) {
  return Painter(model, situation, canvas, now, wall).paint();
}

}  // namespace orbctl
