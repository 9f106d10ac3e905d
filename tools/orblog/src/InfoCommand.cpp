// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
// orblog info: prints a summary of encrypted log files, with and without the key.
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cinttypes>
#include <cstdio>
#include <optional>
#include <string>
#include <vector>

#include "Commands.h"
#include "orblog/Console.h"
#include "orblog/FileStart.h"
#include "orblog/Format.h"
#include "orblog/LogFiles.h"
#include "orblog/LogLine.h"
#include "orblog/Text.h"
#include "orbtool/Run.h"

namespace orblog {
namespace {

// The result of following the lengths.
struct Walk {
  uint64_t records = 0;
  uint64_t end = 0;
  bool whole = false;  // up to the end of the file
};

Walk walkLengths(PooledFile& file, uint64_t start, uint64_t size) {
  Walk walk;
  walk.end = start;
  // One piece contains many lengths.
  std::array<uint8_t, size_t{64} << 10> piece;
  uint64_t pieceStart = 0, pieceEnd = 0;
  while (walk.end + kLengthSize <= size) {
    if (walk.end + kLengthSize > pieceEnd) {
      const ssize_t got =
          pread(file.fd(), piece.data(), piece.size(), static_cast<off_t>(walk.end));
      if (got < static_cast<ssize_t>(kLengthSize)) break;
      pieceStart = walk.end;
      pieceEnd = walk.end + static_cast<uint64_t>(got);
    }
    const uint64_t sealed = readLength(piece.data() + (walk.end - pieceStart));
    if (sealed < kSealSize || walk.end + kLengthSize + sealed > size) break;
    walk.end += kLengthSize + sealed;
    ++walk.records;
  }
  walk.whole = walk.end == size;
  return walk;
}

// A wrapped key can end with a zero byte, so this is the next larger key size; 0 for a field of
// zeros.
size_t keySizeOf(const std::array<uint8_t, kHeaderSize>& header) {
  const size_t used = wrappedSize({header.data(), header.size()});
  for (const size_t size : {size_t{0}, size_t{256}, size_t{384}}) {
    if (used <= size) return size;
  }
  return header.size();
}

void printHeader(const std::array<uint8_t, kHeaderSize>& header, bool present) {
  const size_t wrapped = keySizeOf(header);
  if (!present) {
    std::printf("  header:   none\n");
  } else if (wrapped == 0) {
    std::printf("  header:   zeros, the session key is lost\n");
  } else {
    std::printf("  header:   made for a key of up to %zu bits\n", wrapped * 8);
  }
}

class Informer {
 public:
  Informer(const PrivateKey* key, Console& console) : mKey(key), mConsole(console) {
    if (key != nullptr) mFinder.emplace(*key, mRing);
  }
  void tellAll(const std::vector<std::string>& paths) {
    std::vector<std::unique_ptr<LogSource>> sources;
    for (const std::string& path : paths) {
      std::string error;
      sources.push_back(LogSource::open(path, mPool, mRing, mFinder ? &*mFinder : nullptr, error));
      if (sources.back() != nullptr) {
        sources.back()->primeKey();
      } else if (!error.empty()) {
        mConsole.problem(error);
      }
    }
    for (const std::unique_ptr<LogSource>& source : sources) {
      if (source != nullptr) tell(*source);
    }
  }

 private:
  void tell(LogSource& source) {
    const uint64_t size = source.look();
    std::printf("%s: %" PRIu64 " bytes\n", terminalSafe(source.path()).c_str(), size);
    const std::vector<uint8_t> start = source.start(kStartSize);
    if (isText({start.data(), start.size()}))
      return mConsole.problem(source.path() + ": a text file, not an encrypted log file");
    tellStructure(source, size);
    if (mKey != nullptr) tellContents(source, size);
    if (!source.fault().empty()) mConsole.problem(source.path() + ": " + source.fault());
  }
  void tellStructure(LogSource& source, uint64_t size);
  void tellContents(LogSource& source, uint64_t size);

  const PrivateKey* const mKey;
  Console& mConsole;
  KeyRing mRing;
  std::optional<KeyFinder> mFinder;
  FilePool mPool;
};

void Informer::tellStructure(LogSource& source, uint64_t size) {
  PooledFile& file = source.file();
  std::array<uint8_t, kHeaderSize> header = {};
  bool present =
      pread(file.fd(), header.data(), header.size(), 0) == static_cast<ssize_t>(header.size());
  Walk walk = walkLengths(file, kHeaderSize, size);
  if (!present || !walk.whole) {
    const Walk bare = walkLengths(file, 0, size);
    if (!present || bare.whole) walk = bare;
    present = present && !bare.whole;
  }
  printHeader(header, present);
  std::printf("  records:  %" PRIu64 " by their lengths\n", walk.records);
  // With the key, the records show the cause more exactly.
  if (!walk.whole && mKey == nullptr)
    mConsole.problem(source.path() + ": offset " + std::to_string(walk.end) +
                     ": no whole record begins here");
}

// The records that can be read, and the faults.
struct Contents {
  uint64_t records = 0;
  bool fits = true;
  bool lost = false;  // the session key is lost
  std::optional<LogLine> first, last;

  void add(const Parsed& parsed) {
    records += parsed.records.size();
    for (const Finding& finding : parsed.findings) {
      lost = lost || finding.kind == Finding::Kind::HeaderZero;
      fits = fits && finding.kind != Finding::Kind::HeaderUnreadable &&
             finding.kind != Finding::Kind::HeaderZero && finding.kind != Finding::Kind::HeaderCut;
    }
    for (const Record& record : parsed.records) {
      std::optional<LogLine> line = parseLine(record.text);
      if (!line) continue;
      // Everything that points into the text is destroyed with it.
      line->tag = line->message = {};
      if (!first || line->stamp < first->stamp) first = line;
      if (!last || line->stamp >= last->stamp) last = line;
    }
  }
};

void Informer::tellContents(LogSource& source, uint64_t size) {
  Contents contents;
  LogParser& parser = source.parser();
  for (bool more = true; more;) {
    Parsed parsed;
    more = source.readSome(parser, size, parsed);
    if (!more) parser.finish(parsed);
    if (!parsed.findings.empty()) {
      const std::vector<uint8_t> start = source.start(kStartSize);
      explainHeaders(parsed.findings, {start.data(), start.size()}, *mKey, mRing);
    }
    mConsole.report(source.path(), parsed.findings);
    contents.add(parsed);
  }
  const char* verdict = contents.fits ? "fits" : "does not fit";
  if (contents.lost) verdict = "but no key fits zeros";
  if (contents.records == 0 && parser.seen() < kHeaderSize) verdict = "no header to try it on";
  (void)parser.restart();
  std::printf("  key:      %d bits, %s\n", mKey->bits(), verdict);
  std::printf("  readable: %" PRIu64 " records\n", contents.records);
  if (contents.first)
    std::printf("  time:     %s to %s\n", contents.first->time.c_str(),
                contents.last->time.c_str());
}

}  // namespace

int runInfo(const InfoRequest& request) {
  Console console;
  std::optional<PrivateKey> key;
  if (!request.key.empty()) {
    std::string error;
    key = PrivateKey::load(request.key, request.passphraseFile, error);
    if (!key) {
      console.problem(error);
      return orbtool::kExitFailed;
    }
    if (!key->warning().empty()) console.note(request.key + ": " + key->warning());
  }
  const FileList list = findLogFiles(request.files);
  for (const std::string& problem : list.problems) console.problem(problem);
  Informer(key ? &*key : nullptr, console).tellAll(list.files);
  console.reportUntold();
  return console.hadProblem() ? orbtool::kExitFailed : orbtool::kExitDone;
}

}  // namespace orblog
