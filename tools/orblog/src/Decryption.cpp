// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "orblog/Decryption.h"

#include <algorithm>
#include <functional>
#include <iterator>
#include <optional>
#include <utility>

#include "orblog/FileStart.h"
#include "orblog/InputStream.h"

namespace orblog {
namespace {

// The memory for the loaded records of all files, and of one file.
constexpr size_t kSharedRoom = size_t{16} << 20;
constexpr size_t kLeastRoom = size_t{2} << 10;
constexpr size_t kMostRoom = size_t{256} << 10;

bool lacksEnd(const Finding& finding) {
  return finding.kind == Finding::Kind::CutRecord || finding.kind == Finding::Kind::HeaderCut;
}

// Returns the records of a file up to `end`, a few at a time. With `finishes`, no data follows
// `end`. `see` gets the findings.
class ReadPieces {
 public:
  ReadPieces(LogSource& file, std::shared_ptr<LogParser> parser, uint64_t end, bool finishes,
             size_t room, std::function<void(Parsed&)> see = {})
      : mFile(file),
        mParser(std::move(parser)),
        mEnd(end),
        mFinishes(finishes),
        mRoom(room),
        mSee(std::move(see)) {}
  std::vector<Record> operator()() {
    Parsed parsed;
    parsed.room = mRoom;
    while (mMore && parsed.records.empty()) {
      parsed.findings.clear();
      mMore = mFile.readSome(*mParser, mEnd, parsed);
      if (!mMore && mFinishes) mParser->finish(parsed);
      if (mSee) mSee(parsed);
    }
    // Bytes after the last whole record are read again with the next ones.
    (void)mParser->restart();
    return std::move(parsed.records);
  }

 private:
  LogSource& mFile;
  std::shared_ptr<LogParser> mParser;
  const uint64_t mEnd;
  const bool mFinishes;
  const size_t mRoom;
  std::function<void(Parsed&)> mSee;
  bool mMore = true;
};

void eraseInput(std::vector<std::string>& arguments) {
  arguments.erase(std::remove(arguments.begin(), arguments.end(), "-"), arguments.end());
}

}  // namespace

Decryption::Decryption(const PrivateKey& key, LinePrinter& printer, Console& console)
    : mKey(key), mPrinter(printer), mConsole(console), mFinder(key, mRing) {}

void Decryption::open(const std::vector<std::string>& paths) {
  const size_t former = mSources.size();
  for (const std::string& path : paths) {
    std::string error;
    std::unique_ptr<LogSource> file = LogSource::open(path, mPool, mRing, &mFinder, error);
    if (file != nullptr) {
      file->primeKey();
      mSources.push_back({std::move(file)});
    } else if (!error.empty() && mFailedToOpen.insert(path).second) {
      mConsole.problem(error);
    }
  }
  std::stable_sort(
      mSources.begin() + static_cast<std::ptrdiff_t>(former), mSources.end(),
      [](const Source& a, const Source& b) { return a.file->changed() < b.file->changed(); });
}

size_t Decryption::share() const {
  return std::clamp(kSharedRoom / std::max<size_t>(mSources.size(), 1), kLeastRoom, kMostRoom);
}

void Decryption::report(const Source& source, std::vector<Finding> findings, Extent extent) {
  if (extent == Extent::SeenAgain)
    findings.erase(std::remove_if(findings.begin(), findings.end(), lacksEnd), findings.end());
  const auto lacksKey = [](const Finding& finding) {
    return finding.kind == Finding::Kind::HeaderUnreadable ||
           finding.kind == Finding::Kind::HeaderCut;
  };
  if (std::any_of(findings.begin(), findings.end(), lacksKey)) {
    const std::vector<uint8_t> start = source.file->start(kStartSize);
    explainHeaders(findings, {start.data(), start.size()}, mKey, mRing);
  }
  mConsole.report(source.file->path(), findings);
}

// For a file that is read for the first time and is in order: its records need not be read before
// they are printed.
std::optional<RecordStream> Decryption::readInOrder(Source& source, Extent extent) {
  LogSource& file = *source.file;
  if (extent == Extent::SeenAgain || source.seen > 0 || !file.fault().empty()) return std::nullopt;
  const uint64_t end = file.look();
  std::vector<Record> ends;
  if (end <= share() || !file.isInOrder(end, extent == Extent::Present, ends)) return std::nullopt;
  RecordTimes times;
  times.add({ends.front()});
  times.add({ends.back()});
  const bool areLines = times.first() != kNoStamp && parseLine(ends.back().text);
  if (!areLines) return std::nullopt;
  times.leaveOpen();
  source.latest = times.last();
  const auto see = [this, &source, extent](Parsed& parsed) {
    LogSource& read = *source.file;
    report(source, std::move(parsed.findings), extent);
    const uint64_t seen = read.parser().seen();
    if (seen > source.seen) mConsole.advance(seen - source.seen);
    source.seen = seen;
    if (!read.fault().empty()) mConsole.problem(read.path() + ": " + read.fault());
  };
  // The file's own parser, which continues there when the file has grown.
  const std::shared_ptr<LogParser> parser(std::shared_ptr<void>(), &file.parser());
  return RecordStream(file.path(), file.changed(), times,
                      ReadPieces(file, parser, end, extent == Extent::Rest, share(), see));
}

RecordStream Decryption::readInput() {
  const auto input = std::make_shared<InputStream>(mKey, mRing, mFinder, mConsole,
                                                   [this] { (void)mPrinter.flush(); });
  std::vector<Record> first = input->read();
  RecordTimes times;
  times.add(first);
  times.leaveOpen();
  const auto load = [input, first = std::move(first)]() mutable {
    return first.empty() ? input->read() : std::exchange(first, {});
  };
  return RecordStream(kInputName, 0, times, load);
}

// Reads the new part of a file and returns its records, up to the current end only. Otherwise a
// file that grows fast would never end.
RecordStream Decryption::read(Source& source, Extent extent) {
  std::optional<RecordStream> inOrder = readInOrder(source, extent);
  if (inOrder) return std::move(*inOrder);
  LogSource& file = *source.file;
  const bool finishes = extent != Extent::Present;
  const bool failedBefore = !file.fault().empty();
  const uint64_t end = extent == Extent::SeenAgain || failedBefore ? source.seen : file.look();
  LogParser& parser = file.parser();
  const auto again = std::make_shared<LogParser>(parser);
  again->knowNoMoreKeys();
  RecordTimes times(source.latest);
  std::vector<Record> kept;
  size_t keptSize = 0;
  const auto take = [&](Parsed& parsed) {
    report(source, std::move(parsed.findings), extent);
    times.add(parsed.records);
    keptSize += parsed.size;
    if (keptSize > share()) {
      std::vector<Record>().swap(kept);
    } else {
      std::move(parsed.records.begin(), parsed.records.end(), std::back_inserter(kept));
    }
  };
  for (bool more = true; more;) {
    Parsed parsed;
    more = file.readSome(parser, end, parsed);
    if (parser.seen() > source.seen) mConsole.advance(parser.seen() - source.seen);
    source.seen = parser.seen();
    if (!more && finishes) parser.finish(parsed);
    take(parsed);
  }
  (void)parser.restart();
  if (!failedBefore && !file.fault().empty()) mConsole.problem(file.path() + ": " + file.fault());
  if (times.count() > 0) source.latest = times.last();
  RecordLoader load = ReadPieces(file, again, source.seen, finishes, share());
  if (keptSize <= share())
    load = [kept = std::move(kept)]() mutable { return std::exchange(kept, {}); };
  return RecordStream(file.path(), file.changed(), times, std::move(load));
}

void Decryption::print(RecordStreams streams) {
  mergeByTime(
      streams,
      [this](const std::string& file, const Record& record, Stamp stamp) {
        mPrinter.print(file, record, stamp);
      },
      [this] { return mPrinter.hasFailed(); });
  noteUnjudged();
  for (const RecordStream& stream : streams) {
    if (stream.missing() > 0)
      mConsole.problem(stream.file() + ": changed while it was read; " +
                       std::to_string(stream.missing()) + " records of it are not printed");
  }
}

// Without this message, a selection would seem to fail if the lines have an unknown form. Once per
// file, because a followed file may have many such records.
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
  std::vector<std::string> paths = arguments;
  eraseInput(paths);
  const FileList list = findLogFiles(paths);
  for (const std::string& problem : list.problems)
    mConsole.problem(readsOn ? problem + "; waiting" : problem);
  open(list.files);
  RecordStreams streams;
  // A new header can have the key of files without a header.
  if (paths.size() < arguments.size()) streams.push_back(readInput());
  uint64_t total = 0;
  for (const Source& source : mSources) total += source.file->size();
  mConsole.startProgress(total);
  for (Source& source : mSources)
    streams.push_back(read(source, readsOn ? Extent::Present : Extent::Rest));
  if (!mConsole.mayGoOnBesideLines()) mConsole.endProgress();
  sortByAge(streams);
  print(std::move(streams));
  mConsole.endProgress();
  if (!readsOn) mConsole.reportUntold();
}

void Decryption::openNew(const std::vector<std::string>& arguments) {
  mPool.makeRoom();
  std::vector<std::string> paths = findLogFiles(arguments).files;
  std::set<std::string> known;
  for (Source& source : mSources) {
    source.retired = !source.file->isCurrent();
    if (!source.retired) known.insert(source.file->path());
  }
  const auto isKnown = [&known](const std::string& path) { return known.count(path) > 0; };
  paths.erase(std::remove_if(paths.begin(), paths.end(), isKnown), paths.end());
  open(paths);
}

// The newest file is read first. When it is read, the older files are already complete, so none of
// their lines comes late.
bool Decryption::readNew(const std::vector<std::string>& arguments) {
  openNew(arguments);
  RecordStreams streams;
  for (auto source = mSources.rbegin(); source != mSources.rend(); ++source)
    streams.push_back(read(*source, source->retired ? Extent::Rest : Extent::Present));
  std::reverse(streams.begin(), streams.end());
  print(std::move(streams));
  mSources.erase(std::remove_if(mSources.begin(), mSources.end(),
                                [](const Source& source) { return source.retired; }),
                 mSources.end());
  // If there are more files than descriptors, the newest files stay open, because they are still
  // written and removed.
  if (mSources.size() > mPool.most()) {
    for (size_t i = mSources.size() - mPool.most(); i < mSources.size(); ++i)
      (void)mSources[i].file->file().fd();
  }
  return mPrinter.flush();
}

void Decryption::finish() {
  RecordStreams streams;
  for (Source& source : mSources) streams.push_back(read(source, Extent::SeenAgain));
  mConsole.reportUntold();
  print(std::move(streams));
  mSources.clear();
}

}  // namespace orblog
