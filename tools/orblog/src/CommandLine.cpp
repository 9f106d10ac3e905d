// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "orbtool/CommandLine.h"

#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <charconv>
#include <chrono>
#include <optional>
#include <string>

#include "Commands.h"
#include "orblog/Format.h"
#include "orblog/Moment.h"

namespace orblog {
namespace {

const char kFooter[] =
    "Exit status: 0 done, 1 something could not be read or written, 2 wrong arguments.\n"
    "Examples:\n"
    "  orblog keygen --out keys\n"
    "  orblog decrypt --key keys/orb_log_private.pem /data/vendor/orb_logs\n"
    "  orblog info /data/vendor/orb_logs/main";

const char kDecryptFooter[] =
    "If a DIR is given, every orb_log_* file in it and in its subdirectories is read, except\n"
    "orb_log_config, orb_log_trace and *.pem. Faults are reported on standard error with file\n"
    "and byte offset. Everything before and after a fault is printed.\n"
    "\n"
    "TIME: \"2025-05-24 13:02:07.045\" or a shorter form of it (\"2025-05-24 13:02\",\n"
    "\"2025-05-24\"); HH:MM[:SS[.mmm]] of today; yesterday, today or tomorrow, with or\n"
    "without a time after it; now, -5min, -1h30min, +2d or \"3h ago\"; @SECONDS since 1970;\n"
    "\"2025-05-24T13:02:07Z\" or with +02:00. Log lines have the device's local time without\n"
    "a time zone. Times that are relative to now or have a time zone are converted to the\n"
    "local time of this machine. If the device has another time zone, set TZ to that zone.\n"
    "\n"
    "Exit status: 0 everything was read (or a signal ended --follow), 1 something could not be\n"
    "read or written, 2 wrong arguments.\n"
    "Examples:\n"
    "  orblog decrypt --key orb_log_private.pem logs/\n"
    "  orblog decrypt -k orb_log_private.pem --level W --since -2h --grep handshake logs/main\n"
    "  ssh device cat /data/vendor/orb_logs/main/orb_log_p0_00 | orblog decrypt -k key.pem -\n"
    "  orblog decrypt -k orb_log_private.pem --follow --json /data/vendor/orb_logs | jq .message";

const char kInfoFooter[] =
    "Exit status: 0 everything was read, 1 something could not be read or written, 2 wrong "
    "arguments.\n"
    "Example: orblog info --key orb_log_private.pem /data/vendor/orb_logs";

const char kKeygenFooter[] =
    "Exit status: 0 done, 1 a file exists or cannot be written, 2 wrong arguments.\n"
    "Example: orblog keygen --out keys --bits 4096 --records 30000 --files 10";

int64_t millisecondsNow() {
  using namespace std::chrono;
  return duration_cast<milliseconds>(system_clock::now().time_since_epoch()).count();
}

// If an option is given several times, the last one counts, as with getopt.
template <class Value>
CLI::Option* addLast(CLI::App& app, const char* names, Value& value, const char* type,
                     const char* description) {
  return app.add_option(names, value, description)->type_name(type)->take_last();
}

// An option whose value `take` reads. `take` returns an error text, empty if the value is right.
// A shell offers `values` for completion: "{one,other}".
CLI::Option* addRead(CLI::App& app, const char* names, const char* type, const char* description,
                     const std::function<std::string(const std::string&)>& take,
                     const char* values = "") {
  return app
      .add_option_function<std::string>(
          names, [](const std::string&) {}, description)
      ->check(take, values)
      ->type_name(type)
      ->take_last();
}

std::optional<uint64_t> numberOf(const std::string& text, uint64_t least, uint64_t greatest) {
  uint64_t number = 0;
  const char* const end = text.data() + text.size();
  const auto [rest, error] = std::from_chars(text.data(), end, number);
  if (error != std::errc() || rest != end || number < least || number > greatest)
    return std::nullopt;
  return number;
}

template <class Value>
std::string takeNumber(const std::string& text, uint64_t least, uint64_t greatest, Value& value) {
  const std::optional<uint64_t> number = numberOf(text, least, greatest);
  if (!number)
    return "not a number from " + std::to_string(least) + " to " + std::to_string(greatest) + ": " +
           text;
  value = static_cast<Value>(*number);
  return {};
}

std::string takeLevel(const std::string& text, int& level) {
  const char letter =
      text.size() == 1 ? static_cast<char>(std::toupper(static_cast<unsigned char>(text[0]))) : 0;
  if (levelRank(letter) < levelRank('V')) return "not one of V, D, I, W, E and F: " + text;
  level = levelRank(letter);
  return {};
}

std::string takeMoment(const std::string& text, int64_t now, bool latest,
                       std::optional<Stamp>& moment) {
  moment = parseTime(text, now, latest);
  return moment ? std::string() : "not a time: " + text;
}

std::string takePid(const std::string& text, std::vector<int64_t>& pids) {
  const std::optional<uint64_t> pid = numberOf(text, 0, INT64_MAX);
  if (!pid) return "not a process id: " + text;
  pids.push_back(static_cast<int64_t>(*pid));
  return {};
}

std::string takeBits(const std::string& text, int& bits) {
  if (numberOf(text, uint64_t{kLargestKeyBits} + 1, UINT64_MAX))
    return "a log file has room for a key of at most " + std::to_string(kLargestKeyBits) +
           " bits: " + text;
  return takeNumber(text, kSmallestKeyBits, kLargestKeyBits, bits);
}

template <class Request>
void addFilesAndKey(CLI::App& app, Request& request, const char* files) {
  app.add_option(files, request.files)->type_name("");
  addLast(app, "-k,--key", request.key, "FILE",
          "The RSA private key in PEM form (PKCS#1 or PKCS#8)");
  addLast(app, "-p,--passphrase-file", request.passphraseFile, "FILE",
          "The first line of FILE is the passphrase of an encrypted key. [Default: ask at the "
          "terminal]");
}

// Options that are checked together after parsing.
struct Rest {
  std::string grep;
  bool caseSensitive = false;
  CLI::Option* caseOption = nullptr;
};

void addSelection(CLI::App& app, DecryptRequest& request, Rest& rest) {
  Selection& selection = request.selection;
  const int64_t now = millisecondsNow();
  addRead(
      app, "-l,--level", "LEVEL",
      "Print only lines of LEVEL and above: V, D, I, W, E or F. [Default: all]",
      [&](const std::string& text) { return takeLevel(text, selection.leastLevel); },
      "{V,D,I,W,E,F}");
  addRead(
      app, "-s,--since", "TIME", "Print only lines from TIME on",
      [&, now](const std::string& text) { return takeMoment(text, now, false, selection.since); });
  addRead(
      app, "-u,--until", "TIME",
      "Print only lines up to TIME. The whole day, minute or second of TIME is included",
      [&, now](const std::string& text) { return takeMoment(text, now, true, selection.until); });
  addRead(app, "-P,--pid", "PID", "Print only lines of this process; may be given several times",
          [&](const std::string& text) { return takePid(text, selection.pids); });
  app.add_option("-t,--tag", selection.tags,
                 "Print only lines with this tag; may be given several times")
      ->type_name("TAG")
      ->allow_extra_args(false);
  addLast(app, "-g,--grep", rest.grep, "REGEX",
          "Print only lines that match this extended regular expression anywhere; case-sensitive "
          "if it has a capital letter");
  rest.caseOption = app.add_flag("--case-sensitive", rest.caseSensitive,
                                 "Make --grep case-sensitive; =no: not case-sensitive");
  addRead(app, "-n,--lines", "N", "Print only the last N of these lines",
          [&](const std::string& text) {
            size_t count = 0;
            const std::string wrong = takeNumber(text, 0, 1000000000, count);
            request.lastLines = count;
            return wrong;
          });
}

void addDecrypt(CLI::App& app, DecryptRequest& request, Rest& rest) {
  CLI::App& command = *app.add_subcommand(
      "decrypt", "Print the lines of encrypted log files; lines of all files in the order of time");
  command.footer(kDecryptFooter);
  addFilesAndKey(command, request, "FILE|DIR|-");
  command.add_flag("-f,--follow", request.follow,
                   "Continue with new lines and new files, until SIGINT or SIGTERM");
  addSelection(command, request, rest);
  command.add_flag(
      "-j,--json", request.json,
      "Print each line as a JSON object: time, pid, tid, level, tag, unit, function, line, "
      "message, file, offset, parsed");
  addRead(
      command, "--color", "WHEN",
      "Colour lines by their level: auto (on a terminal, unless NO_COLOR is set), always or "
      "never. [Default: auto]",
      [&](const std::string& text) {
        if (text == "auto")
          request.colour = ColourWish::Auto;
        else if (text == "always")
          request.colour = ColourWish::Always;
        else if (text == "never")
          request.colour = ColourWish::Never;
        else
          return "not one of auto, always and never: " + text;
        return std::string();
      },
      "{auto,always,never}");
}

void addInfo(CLI::App& app, InfoRequest& request) {
  CLI::App& command = *app.add_subcommand(
      "info",
      "Print a summary of encrypted log files: size, number of records for each record length and "
      "key size of the header; with the private key also whether it fits, how many records can be "
      "read, and the time from the first to the last record");
  command.footer(kInfoFooter);
  addFilesAndKey(command, request, "FILE|DIR");
}

void addKeygen(CLI::App& app, KeyFilesRequest& request) {
  CLI::App& command = *app.add_subcommand(
      "keygen",
      "Make an RSA key pair and a log configuration file with its public key: orb_log_private.pem "
      "(readable by its owner only), orb_log_public.pem and orb_log_config");
  command.footer(kKeygenFooter);
  addLast(command, "-o,--out", request.directory, "DIR",
          "Write to this directory; it is created if it does not exist");
  addRead(command, "-b,--bits", "N",
          "Size of the key: 2048 to 4096. A larger key does not fit into the 512 bytes that a log "
          "file has for it. [Default: 3072]",
          [&](const std::string& text) { return takeBits(text, request.bits); });
  addRead(command, "-r,--records", "N", "Records per log file: 3000 to 30000. [Default: 10000]",
          [&](const std::string& text) {
            return takeNumber(text, kLeastRecords, kMostRecords, request.records);
          });
  addRead(command, "-n,--files", "N", "Number of log files to keep: 3 to 10. [Default: 5]",
          [&](const std::string& text) {
            return takeNumber(text, kLeastFiles, kMostFiles, request.files);
          });
  addLast(
      command, "-p,--passphrase-file", request.passphraseFile, "FILE",
      "Encrypt the private key (AES-256) with the first line of FILE. [Default: not encrypted]");
  command.add_flag("-F,--force", request.force,
                   "Replace existing files. Logs for a replaced private key cannot be read any "
                   "more");
}

bool namesStandardInput(const std::vector<std::string>& files) {
  return std::find(files.begin(), files.end(), "-") != files.end();
}

// Checks the options together. Returns an error text, empty if they are right.
std::string complete(DecryptRequest& request, const Rest& rest) {
  const Selection& selection = request.selection;
  if (request.key.empty()) return "--key is missing";
  if (request.files.empty()) return "no file or directory is given";
  if (selection.since && selection.until && *selection.since > *selection.until)
    return "--since is after --until, so no line is between them";
  if (request.follow && namesStandardInput(request.files))
    return "--follow is not for standard input, which is always read to its end";
  if (namesStandardInput(request.files) && isatty(STDIN_FILENO) == 1)
    return "standard input is a terminal; give a file or a pipe";
  const bool hasCase = rest.caseOption->count() > 0;
  if (rest.grep.empty()) return hasCase ? "--case-sensitive without --grep" : "";
  std::string error;
  request.selection.grep = Pattern::make(
      rest.grep, hasCase ? std::optional<bool>(rest.caseSensitive) : std::nullopt, error);
  return error.empty() ? error : "--grep: " + error + ": " + rest.grep;
}

std::string complete(const InfoRequest& request) {
  if (request.files.empty()) return "no file or directory is given";
  if (namesStandardInput(request.files))
    return "standard input is not allowed here; for a file with the name - give ./-";
  return {};
}

}  // namespace

int runOrblog(int argc, char** argv) {
  orbtool::CommandLine line("orblog",
                            "Decrypt the encrypted log files of the library with the private key "
                            "that belongs to them.");
  DecryptRequest decrypt;
  InfoRequest info;
  KeyFilesRequest keygen;
  Rest rest;
  line.app().footer(kFooter);
  line.app().require_subcommand(1);
  addDecrypt(line.app(), decrypt, rest);
  addInfo(line.app(), info);
  addKeygen(line.app(), keygen);
  const std::optional<int> status = line.parse(argc, argv);
  if (status) return *status;
  const std::string command = line.app().get_subcommands().front()->get_name();
  std::string wrong;
  if (command == "decrypt") {
    wrong = complete(decrypt, rest);
  } else if (command == "info") {
    wrong = complete(info);
  } else if (keygen.directory.empty()) {
    wrong = "--out is missing";
  }
  if (!wrong.empty()) return line.refuse(wrong);
  if (command == "decrypt") return runDecrypt(decrypt);
  return command == "info" ? runInfo(info) : runKeygen(keygen);
}

}  // namespace orblog
