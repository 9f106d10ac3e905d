// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
// orblog info: what encrypted log files hold, as far as it can be told with and without the key.
#include <getopt.h>
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
#include "orblog/Format.h"
#include "orblog/LogFiles.h"
#include "orblog/LogLine.h"
#include "orblog/Text.h"

namespace orblog {
namespace {

const char kHelp[] =
    "Usage: orblog info [OPTIONS] FILE|DIR...\n"
    "Tell what encrypted log files hold: size, records by their lengths and the size of the\n"
    "key that the header is made for; with the private key also whether it fits, how many\n"
    "records can be read and the time that they cover.\n"
    "\n"
    "  -k, --key FILE           The RSA private key in PEM form (PKCS#1 or PKCS#8).\n"
    "  -p, --passphrase-file FILE\n"
    "                           The first line of FILE opens an encrypted key. [Default: ask]\n"
    "  -h, --help               Print this text and exit.\n"
    "\n"
    "Exit status: 0 all was read, 1 something could not be read, 2 wrong arguments.\n"
    "Example: orblog info --key orb_log_private.pem /data/vendor/orb_logs\n";

struct Arguments {
  std::string key, passphraseFile;
  std::vector<std::string> files;
};

// The exit status when the program is to end now, -1 when it is to go on.
int parseArguments(int argc, char** argv, Arguments& arguments) {
  static const option kOptions[] = {{"key", required_argument, nullptr, 'k'},
                                    {"passphrase-file", required_argument, nullptr, 'p'},
                                    {"help", no_argument, nullptr, 'h'},
                                    {nullptr, 0, nullptr, 0}};
  int choice = 0;
  while ((choice = getopt_long(argc, argv, "k:p:h", kOptions, nullptr)) != -1) {
    switch (choice) {
      case 'k':
        arguments.key = optarg;
        break;
      case 'p':
        arguments.passphraseFile = optarg;
        break;
      case 'h':
        std::fputs(kHelp, stdout);
        return kExitDone;
      default:
        return kExitUsage;  // getopt_long has said why
    }
  }
  arguments.files.assign(argv + optind, argv + argc);
  if (arguments.files.empty()) return refuse("info", "no file or directory is given");
  return -1;
}

// Where the lengths lead.
struct Walk {
  uint64_t records = 0;
  uint64_t end = 0;
  bool whole = false;  // to the file's end
};

Walk walkLengths(int fd, uint64_t start, uint64_t size) {
  Walk walk;
  walk.end = start;
  std::array<uint8_t, kLengthSize> length = {};
  while (walk.end + kLengthSize <= size &&
         pread(fd, length.data(), length.size(), static_cast<off_t>(walk.end)) ==
             static_cast<ssize_t>(length.size())) {
    const uint64_t sealed = readLength(length.data());
    if (sealed < kSealSize || walk.end + kLengthSize + sealed > size) break;
    walk.end += kLengthSize + sealed;
    ++walk.records;
  }
  walk.whole = walk.end == size;
  return walk;
}

// The bytes up to the zeros that fill the field up. A wrapped key may end in a zero byte itself, so
// it is the next size that keys have; 0 for a field of zeros.
size_t wrappedSize(const std::array<uint8_t, kHeaderSize>& header) {
  size_t used = header.size();
  while (used > 0 && header[used - 1] == 0) --used;
  for (const size_t size : {size_t{0}, size_t{256}, size_t{384}}) {
    if (used <= size) return size;
  }
  return header.size();
}

void printHeader(const std::array<uint8_t, kHeaderSize>& header, bool present) {
  const size_t wrapped = wrappedSize(header);
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
      sources.push_back(LogSource::open(path, mRing, mFinder ? &*mFinder : nullptr, error));
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
    const uint64_t size = static_cast<uint64_t>(source.status().st_size);
    std::printf("%s: %" PRIu64 " bytes\n", terminalSafe(source.path()).c_str(), size);
    tellStructure(source, size);
    if (mKey != nullptr) tellContents(source);
  }
  void tellStructure(const LogSource& source, uint64_t size);
  void tellContents(LogSource& source);

  const PrivateKey* const mKey;
  Console& mConsole;
  KeyRing mRing;
  std::optional<KeyFinder> mFinder;
};

void Informer::tellStructure(const LogSource& source, uint64_t size) {
  std::array<uint8_t, kHeaderSize> header = {};
  bool present =
      pread(source.fd(), header.data(), header.size(), 0) == static_cast<ssize_t>(header.size());
  Walk walk = walkLengths(source.fd(), kHeaderSize, size);
  if (!present || !walk.whole) {
    const Walk bare = walkLengths(source.fd(), 0, size);
    if (!present || bare.whole) walk = bare;
    present = present && !bare.whole;
  }
  printHeader(header, present);
  std::printf("  records:  %" PRIu64 " by their lengths\n", walk.records);
  // With the key the contents tell more exactly what is wrong.
  if (!walk.whole && mKey == nullptr)
    mConsole.problem(source.path() + ": offset " + std::to_string(walk.end) +
                     ": no whole record begins here");
}

void Informer::tellContents(LogSource& source) {
  Parsed parsed;
  while (source.readSome(parsed)) {
  }
  source.finish(parsed);
  mConsole.report(source.path(), parsed.findings);
  const auto lost = [](const Finding& finding) {
    return finding.kind == Finding::Kind::HeaderUnreadable ||
           finding.kind == Finding::Kind::HeaderZero || finding.kind == Finding::Kind::HeaderCut;
  };
  const bool fits = std::none_of(parsed.findings.begin(), parsed.findings.end(), lost);
  const char* verdict = fits ? "fits" : "does not fit";
  if (parsed.records.empty() && source.position() < kHeaderSize) verdict = "no header to try it on";
  std::printf("  key:      %d bits, %s\n", mKey->bits(), verdict);
  std::printf("  readable: %zu records\n", parsed.records.size());
  std::optional<LogLine> first, last;
  for (const Record& record : parsed.records) {
    const std::optional<LogLine> line = parseLine(record.text);
    if (line && (!first || line->stamp < first->stamp)) first = line;
    if (line && (!last || line->stamp >= last->stamp)) last = line;
  }
  if (first) std::printf("  time:     %s to %s\n", first->time.c_str(), last->time.c_str());
}

}  // namespace

int runInfo(int argc, char** argv) {
  Arguments arguments;
  const int status = parseArguments(argc, argv, arguments);
  if (status >= 0) return status;
  Console console;
  std::optional<PrivateKey> key;
  if (!arguments.key.empty()) {
    std::string error;
    key = PrivateKey::load(arguments.key, arguments.passphraseFile, error);
    if (!key) {
      console.problem(error);
      return kExitFailed;
    }
  }
  const FileList list = findLogFiles(arguments.files);
  for (const std::string& problem : list.problems) console.problem(problem);
  Informer(key ? &*key : nullptr, console).tellAll(list.files);
  console.reportUntold();
  if (std::fflush(stdout) != 0) console.problem("standard output does not take the lines");
  return console.hadProblem() ? kExitFailed : kExitDone;
}

}  // namespace orblog
