// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "orbctl/PlotData.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <map>
#include <optional>

#include "orbctl/Csv.h"

namespace orbctl {
namespace {

using Record = std::vector<std::string>;

// A number that fills the whole cell.
std::optional<double> numberOf(const std::string& cell) {
  if (cell.empty() || cell.find_first_not_of("0123456789.") != std::string::npos)
    return std::nullopt;
  char* end = nullptr;
  const double number = std::strtod(cell.c_str(), &end);
  if (*end != '\0' || !std::isfinite(number)) return std::nullopt;
  return number;
}

// Reads the records in order and keeps the current state. Lives while a file is read.
class Reader {
 public:
  Reader(const Record& header, PlotData& data) : mData(data) {
    for (size_t i = 0; i < header.size(); ++i) mColumns.emplace(header[i], i);
    mWidth = header.size();
  }

  bool knows(const char* column) const { return mColumns.count(column) == 1; }

  // False if the record cannot be read.
  bool take(const Record& record) {
    if (record.size() != mWidth) return false;
    const auto seconds = numberOf(cell(record, "seconds"));
    if (!seconds) return false;
    mData.end = std::max(mData.end, *seconds);
    const std::string service = cell(record, "service"), event = cell(record, "event");
    if (service == "daemon") return takeDaemon(event, *seconds);
    if (event == "handoff") return takePhase(cell(record, "phase"), *seconds);
    if (event != "report" || cell(record, "status") != "SUCCESS") return true;
    return service == "lce" ? takeCapacity(record, *seconds) : takeLatency(record, *seconds);
  }

  void finish() {
    endHandoff(mData.end);
    if (mAwaySince) mData.absences.push_back({*mAwaySince, mData.end});
  }

 private:
  std::string cell(const Record& record, const char* column) const {
    const auto found = mColumns.find(column);
    return found == mColumns.end() ? "" : record[found->second];
  }

  bool takeDaemon(const std::string& event, double seconds) {
    if (event == "down") {
      if (!mAwaySince) mAwaySince = seconds;
      endHandoff(seconds);
      for (Curve* const curve : {&mData.downlinkCapacity, &mData.uplinkCapacity,
                                 &mData.downlinkLatency, &mData.uplinkLatency}) {
        if (!curve->empty() && !curve->back().empty()) curve->emplace_back();
      }
      return true;
    }
    if (event != "up") return false;
    if (mAwaySince) mData.absences.push_back({*mAwaySince, seconds});
    mAwaySince.reset();
    return true;
  }

  bool takePhase(const std::string& phase, double seconds) {
    if (phase == "entry" || phase == "imminent") {
      if (!mPreparedSince) mPreparedSince = seconds;
    } else if (phase == "start") {
      endHandoff(seconds);
      mInterruptedSince = seconds;
    } else if (phase == "success" || phase == "failure" || phase == "exit") {
      endHandoff(seconds);
    } else {
      return false;
    }
    return true;
  }

  void endHandoff(double seconds) {
    if (mPreparedSince) mData.preparations.push_back({*mPreparedSince, seconds});
    if (mInterruptedSince) mData.interruptions.push_back({*mInterruptedSince, seconds});
    mPreparedSince.reset();
    mInterruptedSince.reset();
  }

  bool takeCapacity(const Record& record, double seconds) {
    const std::string direction = cell(record, "direction");
    if (direction != "downlink" && direction != "uplink") return false;
    return add(direction == "downlink" ? mData.downlinkCapacity : mData.uplinkCapacity, seconds,
               cell(record, "rate"));
  }

  bool takeLatency(const Record& record, double seconds) {
    return add(mData.uplinkLatency, seconds, cell(record, "ul_latency")) &&
           add(mData.downlinkLatency, seconds, cell(record, "dl_latency"));
  }

  // Both units are 1/1000 of the units of the plot.
  static bool add(Curve& curve, double seconds, const std::string& text) {
    const auto number = numberOf(text);
    if (!number) return false;
    if (curve.empty()) curve.emplace_back();
    curve.back().push_back({seconds, *number / 1000.0});
    return true;
  }

  PlotData& mData;
  std::map<std::string, size_t> mColumns;
  size_t mWidth = 0;
  std::optional<double> mPreparedSince, mInterruptedSince, mAwaySince;
};

}  // namespace

bool PlotData::empty() const {
  return downlinkCapacity.empty() && uplinkCapacity.empty() && downlinkLatency.empty() &&
         uplinkLatency.empty() && preparations.empty() && interruptions.empty();
}

bool readPlotData(const std::string& text, PlotData& data, std::string& reason) {
  const std::vector<Record> records = csvRecordsOf(text);
  if (records.empty()) {
    reason = "it is empty";
    return false;
  }
  Reader reader(records.front(), data);
  for (const char* const column : {"seconds", "service", "event"}) {
    if (reader.knows(column)) continue;
    reason = std::string("no column \"") + column + "\": not written by --csv";
    return false;
  }
  for (size_t i = 1; i < records.size(); ++i) {
    if (!reader.take(records[i])) ++data.unreadable;
  }
  reader.finish();
  if (!data.empty()) return true;
  reason = "no report and no handoff in it";
  return false;
}

}  // namespace orbctl
