// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "orblog/Decryption.h"

#include <algorithm>
#include <utility>

namespace orblog {
namespace {

int64_t lastChange(const LogSource& source) {
  const struct stat status = source.status();
  return int64_t{status.st_mtim.tv_sec} * 1000000000 + status.st_mtim.tv_nsec;
}

bool lacksEnd(const Finding& finding) {
  return finding.kind == Finding::Kind::CutRecord || finding.kind == Finding::Kind::HeaderCut;
}

}  // namespace

Decryption::Decryption(const PrivateKey& key, LinePrinter& printer, Console& console)
    : mPrinter(printer), mConsole(console), mFinder(key, mRing) {}

void Decryption::open(const std::vector<std::string>& paths) {
  const size_t former = mSources.size();
  for (const std::string& path : paths) {
    std::string error;
    std::unique_ptr<LogSource> file = LogSource::open(path, mRing, &mFinder, error);
    if (file != nullptr) {
      file->primeKey();
      mSources.push_back({std::move(file)});
    } else if (!error.empty() &&
               std::find(mFailedToOpen.begin(), mFailedToOpen.end(), path) == mFailedToOpen.end()) {
      mFailedToOpen.push_back(path);
      mConsole.problem(error);
    }
  }
  std::stable_sort(
      mSources.begin() + static_cast<std::ptrdiff_t>(former), mSources.end(),
      [](const Source& a, const Source& b) { return lastChange(*a.file) < lastChange(*b.file); });
}

Batch Decryption::batchOf(Source& source, std::vector<Record> records) {
  Batch batch;
  batch.file = source.file->path();
  batch.changed = lastChange(*source.file);
  batch.records = std::move(records);
  batch.setStamps(source.latest);
  if (!batch.stamps.empty()) source.latest = batch.stamps.back();
  return batch;
}

Batch Decryption::read(Source& source) {
  Parsed parsed;
  const bool failedBefore = source.file->failed();
  uint64_t position = source.file->position();
  bool more = true;
  while (more) {
    more = source.file->readSome(parsed);
    const uint64_t former = std::exchange(position, source.file->position());
    if (position > former) mConsole.advance(position - former);
  }
  if (!failedBefore && source.file->failed())
    mConsole.problem(source.file->path() + ": offset " + std::to_string(position) +
                     ": the file cannot be read");
  if (source.retired) source.file->finish(parsed);
  mConsole.report(source.file->path(), parsed.findings);
  return batchOf(source, std::move(parsed.records));
}

void Decryption::print(std::vector<Batch>& batches) {
  mergeByTime(batches, [this](const Batch& batch, size_t record) {
    mPrinter.print(batch.file, batch.records[record], batch.stamps[record]);
  });
  noteUnjudged();
}

// Otherwise a selection seems to have no effect, or to find nothing, where the lines have a form
// that is not known. Once per file: what is followed may have many of them.
void Decryption::noteUnjudged() {
  for (const auto& [file, count] : mPrinter.takeUnjudged()) {
    if (!mNoted.insert(file).second) continue;
    const uint64_t total = count.printed + count.leftOut;
    mConsole.note(file + ": " + std::to_string(total) +
                  (total == 1 ? " record is no log line" : " records are no log lines") +
                  ", without a level or time to select by: " + std::to_string(count.printed) +
                  " printed, " + std::to_string(count.leftOut) + " left out");
  }
}

void Decryption::readAll(const std::vector<std::string>& arguments, bool readsOn) {
  const FileList list = findLogFiles(arguments);
  for (const std::string& problem : list.problems) mConsole.problem(problem);
  open(list.files);
  uint64_t total = 0;
  for (const Source& source : mSources)
    total += static_cast<uint64_t>(source.file->status().st_size);
  mConsole.startProgress(total);
  std::vector<Batch> batches;
  for (Source& source : mSources) {
    source.retired = !readsOn;
    batches.push_back(read(source));
  }
  mConsole.endProgress();
  if (!readsOn) mConsole.reportUntold();
  sortByAge(batches);
  print(batches);
}

void Decryption::openNew(const std::vector<std::string>& arguments) {
  std::vector<std::string> paths = findLogFiles(arguments).files;
  for (Source& source : mSources) {
    source.retired = !source.file->isCurrent();
    if (source.retired) continue;
    paths.erase(std::remove(paths.begin(), paths.end(), source.file->path()), paths.end());
  }
  open(paths);
}

// The youngest file is read first: whatever stands in it, the older ones were complete by then, so
// no line of theirs comes late.
bool Decryption::readNew(const std::vector<std::string>& arguments) {
  openNew(arguments);
  std::vector<Batch> batches;
  for (auto source = mSources.rbegin(); source != mSources.rend(); ++source)
    batches.push_back(read(*source));
  std::reverse(batches.begin(), batches.end());
  print(batches);
  mSources.erase(std::remove_if(mSources.begin(), mSources.end(),
                                [](const Source& source) { return source.retired; }),
                 mSources.end());
  return mPrinter.flush();
}

void Decryption::finish() {
  std::vector<Batch> batches;
  for (Source& source : mSources) {
    Parsed parsed;
    source.file->finish(parsed);
    parsed.findings.erase(std::remove_if(parsed.findings.begin(), parsed.findings.end(), lacksEnd),
                          parsed.findings.end());
    mConsole.report(source.file->path(), parsed.findings);
    batches.push_back(batchOf(source, std::move(parsed.records)));
  }
  mConsole.reportUntold();
  print(batches);
  mSources.clear();
}

}  // namespace orblog
