// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "orblog/Merge.h"

#include <algorithm>
#include <queue>
#include <tuple>

namespace orblog {

void Batch::setStamps(Stamp former) {
  stamps.clear();
  stamps.reserve(records.size());
  bool known = former != kNoStamp;
  for (const Record& record : records) {
    const std::optional<LogLine> line = parseLine(record.text);
    if (line && !known) std::fill(stamps.begin(), stamps.end(), line->stamp);
    known = known || line;
    stamps.push_back(line ? line->stamp : stamps.empty() ? former : stamps.back());
  }
}

void sortByAge(std::vector<Batch>& batches) {
  const auto age = [](const Batch& batch) {
    const bool none = batch.stamps.empty();
    return std::make_tuple(none ? 0 : batch.stamps.front(), none ? 0 : batch.stamps.back(),
                           batch.changed, std::string_view(batch.file));
  };
  std::stable_sort(batches.begin(), batches.end(),
                   [&age](const Batch& a, const Batch& b) { return age(a) < age(b); });
}

void mergeByTime(const std::vector<Batch>& batches,
                 const std::function<void(const Batch&, size_t record)>& use) {
  struct Head {
    Stamp stamp;
    size_t batch, record;
    bool operator>(const Head& other) const {
      return std::tie(stamp, batch) > std::tie(other.stamp, other.batch);
    }
  };
  std::priority_queue<Head, std::vector<Head>, std::greater<>> heads;
  for (size_t i = 0; i < batches.size(); ++i) {
    if (!batches[i].records.empty()) heads.push({batches[i].stamps[0], i, 0});
  }
  while (!heads.empty()) {
    const Head head = heads.top();
    heads.pop();
    const Batch& batch = batches[head.batch];
    use(batch, head.record);
    const size_t next = head.record + 1;
    if (next < batch.records.size()) heads.push({batch.stamps[next], head.batch, next});
  }
}

}  // namespace orblog
