// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
// orblog decrypt: prints the lines of encrypted log files.
#include <getopt.h>
#include <signal.h>
#include <unistd.h>

#include <cctype>
#include <cstdio>
#include <ctime>
#include <string>
#include <vector>

#include "Commands.h"
#include "orblog/Decryption.h"

namespace orblog {
namespace {

const char kHelp[] =
    "Usage: orblog decrypt --key FILE [OPTIONS] FILE|DIR...\n"
    "Print the lines of encrypted log files, those of all files in the order of time.\n"
    "\n"
    "Of a DIR every orb_log_* file in it and in its subdirectories is read, except\n"
    "orb_log_config, orb_log_trace and *.pem. What cannot be read is reported on standard\n"
    "error with file and byte offset; everything before and after it is printed.\n"
    "\n"
    "  -k, --key FILE           The RSA private key in PEM form (PKCS#1 or PKCS#8).\n"
    "  -p, --passphrase-file FILE\n"
    "                           The first line of FILE opens an encrypted key. [Default: ask]\n"
    "  -f, --follow             Read on: new lines and new files, until SIGINT or SIGTERM.\n"
    "  -l, --level LEVEL        Only lines of LEVEL and above: V, D, I, W, E or F.\n"
    "                           [Default: all]\n"
    "  -s, --since TIME         Only lines from TIME on.\n"
    "  -u, --until TIME         Only lines up to TIME, all of the day, minute or second\n"
    "                           that it names included.\n"
    "  -j, --json               Print a JSON object per line: time, pid, tid, level, tag,\n"
    "                           message, file, offset.\n"
    "  -h, --help               Print this text and exit.\n"
    "\n"
    "TIME is local time of the device, as in the lines: \"2025-05-24 13:02:07.045\" or as\n"
    "much of it as is needed (\"2025-05-24 13:02\", \"2025-05-24\"), or HH:MM[:SS[.mmm]] of\n"
    "today.\n"
    "Exit status: 0 all was read (or a signal ended --follow), 1 something could not be\n"
    "read, 2 wrong arguments.\n"
    "Examples:\n"
    "  orblog decrypt --key orb_log_private.pem logs/\n"
    "  orblog decrypt -k orb_log_private.pem --level W --since 13:00 --until 13:30 logs/main\n"
    "  orblog decrypt -k orb_log_private.pem --follow --json /data/vendor/orb_logs | jq .message\n";

struct Arguments {
  std::string key, passphraseFile;
  bool follow = false;
  bool json = false;
  Selection selection;
  std::vector<std::string> files;
};

int setLevel(const char* text, Selection& selection) {
  const char letter = static_cast<char>(std::toupper(static_cast<unsigned char>(text[0])));
  if (text[0] == '\0' || text[1] != '\0' || levelRank(letter) < levelRank('V'))
    return refuse("decrypt", "--level: not one of V, D, I, W, E and F: %s", text);
  selection.leastLevel = levelRank(letter);
  return -1;
}

int setMoment(const char* option, const char* text, bool latest, std::optional<Stamp>& moment) {
  const time_t now = time(nullptr);
  tm today = {};
  localtime_r(&now, &today);
  moment = parseMoment(text, today, latest);
  return moment ? -1 : refuse("decrypt", "%s: not a time: %s", option, text);
}

// The exit status when the program is to end now, -1 when it is to go on.
int parseArguments(int argc, char** argv, Arguments& arguments) {
  static const option kOptions[] = {{"key", required_argument, nullptr, 'k'},
                                    {"passphrase-file", required_argument, nullptr, 'p'},
                                    {"follow", no_argument, nullptr, 'f'},
                                    {"level", required_argument, nullptr, 'l'},
                                    {"since", required_argument, nullptr, 's'},
                                    {"until", required_argument, nullptr, 'u'},
                                    {"json", no_argument, nullptr, 'j'},
                                    {"help", no_argument, nullptr, 'h'},
                                    {nullptr, 0, nullptr, 0}};
  int choice = 0, status = -1;
  while (status < 0 &&
         (choice = getopt_long(argc, argv, "k:p:fl:s:u:jh", kOptions, nullptr)) != -1) {
    switch (choice) {
      case 'k':
        arguments.key = optarg;
        break;
      case 'p':
        arguments.passphraseFile = optarg;
        break;
      case 'f':
        arguments.follow = true;
        break;
      case 'l':
        status = setLevel(optarg, arguments.selection);
        break;
      case 's':
        status = setMoment("--since", optarg, false, arguments.selection.since);
        break;
      case 'u':
        status = setMoment("--until", optarg, true, arguments.selection.until);
        break;
      case 'j':
        arguments.json = true;
        break;
      case 'h':
        std::fputs(kHelp, stdout);
        return kExitDone;
      default:
        return kExitUsage;  // getopt_long has said why
    }
  }
  if (status >= 0) return status;
  arguments.files.assign(argv + optind, argv + argc);
  if (arguments.key.empty()) return refuse("decrypt", "--key is missing");
  if (arguments.files.empty()) return refuse("decrypt", "no file or directory is given");
  return -1;
}

// From here on the two signals only end the waiting, and never leave a line half written.
void blockEndingSignals() {
  sigset_t ending;
  sigemptyset(&ending);
  sigaddset(&ending, SIGINT);
  sigaddset(&ending, SIGTERM);
  sigprocmask(SIG_BLOCK, &ending, nullptr);
}

}  // namespace

int runDecrypt(int argc, char** argv) {
  Arguments arguments;
  const int status = parseArguments(argc, argv, arguments);
  if (status >= 0) return status;

  Console console;
  std::string error;
  const std::optional<PrivateKey> key =
      PrivateKey::load(arguments.key, arguments.passphraseFile, error);
  if (!key) {
    console.problem(error);
    return kExitFailed;
  }
  if (!key->warning().empty()) console.note(arguments.key + ": " + key->warning());
  LinePrinter::Form form = LinePrinter::Form::Text;
  if (isatty(STDOUT_FILENO) == 1) form = LinePrinter::Form::SafeText;
  if (arguments.json) form = LinePrinter::Form::Json;
  LinePrinter printer(stdout, form, arguments.selection);
  Decryption decryption(*key, printer, console);
  if (arguments.follow) blockEndingSignals();
  decryption.readAll(arguments.files, arguments.follow);
  const bool followed = arguments.follow && follow(decryption, arguments.files);
  if (!printer.flush()) {
    console.problem("standard output does not take the lines");
    return kExitFailed;
  }
  return followed || !console.hadProblem() ? kExitDone : kExitFailed;
}

}  // namespace orblog
