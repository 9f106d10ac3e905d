// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

// orbd-sim: the daemon stand-in as a program. Everything it does is in the library; this file
// reads the command line, prints the log and waits for the signal that ends it.

#include <getopt.h>
#include <signal.h>
#include <sys/stat.h>

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <limits>
#include <string>

#include "orbsim/Daemon.h"
#include "orbsim/Faults.h"

namespace {

constexpr int kExitFailed = 1;
constexpr int kExitUsage = 2;

const char kHelp[] =
    "Usage: orbd-sim [OPTIONS]\n"
    "Play the system daemon: serve link capacity (LCE), link latency (LLE) and link interruption\n"
    "(LLI) on its socket and log what clients do.\n"
    "\n"
    "  -s, --socket PATH    Listen on PATH. Its directory must exist; that of the default alone "
    "is\n"
    "                       made where it is missing, and removed at the end.\n"
    "                       [Default: /dev/socket/orb]\n"
    "  -i, --interval MS    Send a report, or play a step of a handoff, every MS milliseconds to\n"
    "                       clients that asked for it; 0 for none. [Default: 500]\n"
    "  -S, --seed N         Start the models of link and handoffs from N. [Default: 1]\n"
    "  -f, --faults LIST    Misbehave as the words of LIST say, separated by commas; see below.\n"
    "  -q, --quiet          Log nothing.\n"
    "  -h, --help           Print this text and exit.\n"
    "\n"
    "Faults, for an application's error paths:\n";
const char kHelpEnd[] =
    "\n"
    "SIGINT and SIGTERM end it.\n"
    "Exit status: 0 ended by a signal, 1 the socket cannot be served, 2 wrong arguments.\n"
    "Examples: orbd-sim --interval 100 --seed 7\n"
    "          orbd-sim --faults silent,connections=1\n";

struct Arguments {
  orbsim::Options options;
  orbsim::Faults faults;
  bool quiet = false;
};

// Where only the directory of the default path is made, a missing one is wrong use.
bool placeExists(const std::string& socketPath) {
  const size_t slash = socketPath.rfind('/');
  if (socketPath == orbsim::kSocketPath || slash == std::string::npos) return true;
  struct stat status = {};
  return ::stat(socketPath.substr(0, slash + 1).c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

bool parseNumber(const char* text, unsigned long long limit, unsigned long long& value) {
  if (*text < '0' || *text > '9') return false;  // strtoull takes signs and blanks
  char* end = nullptr;
  errno = 0;
  value = std::strtoull(text, &end, 10);
  return errno == 0 && *end == '\0' && value <= limit;
}

// The exit status when the program is to end now, -1 when it is to go on.
int parseArguments(int argc, char** argv, Arguments& arguments) {
  static const option kOptions[] = {{"socket", required_argument, nullptr, 's'},
                                    {"interval", required_argument, nullptr, 'i'},
                                    {"seed", required_argument, nullptr, 'S'},
                                    {"faults", required_argument, nullptr, 'f'},
                                    {"quiet", no_argument, nullptr, 'q'},
                                    {"help", no_argument, nullptr, 'h'},
                                    {nullptr, 0, nullptr, 0}};
  unsigned long long number = 0;
  int choice = 0;
  while ((choice = getopt_long(argc, argv, "s:i:S:f:qh", kOptions, nullptr)) != -1) {
    switch (choice) {
      case 's':
        if (!placeExists(optarg)) {
          std::fprintf(stderr, "orbd-sim: --socket: its directory does not exist: %s\n", optarg);
          return kExitUsage;
        }
        arguments.options.socketPath = optarg;
        break;
      case 'i':
        if (!parseNumber(optarg, 86400000, number)) {
          std::fprintf(stderr, "orbd-sim: --interval: not a number of milliseconds: %s\n", optarg);
          return kExitUsage;
        }
        arguments.options.reportInterval = std::chrono::milliseconds(number);
        break;
      case 'S':
        if (!parseNumber(optarg, std::numeric_limits<unsigned long long>::max(), number)) {
          std::fprintf(stderr, "orbd-sim: --seed: not a number: %s\n", optarg);
          return kExitUsage;
        }
        arguments.options.seed = number;
        break;
      case 'f': {
        std::string error;
        if (!arguments.faults.parse(optarg, error)) {
          std::fprintf(stderr, "orbd-sim: --faults: %s\n", error.c_str());
          return kExitUsage;
        }
        break;
      }
      case 'q':
        arguments.quiet = true;
        break;
      case 'h':
        std::printf("%s%s%s", kHelp, orbsim::Faults::kHelp, kHelpEnd);
        return EXIT_SUCCESS;
      default:
        return kExitUsage;  // getopt_long has said why
    }
  }
  if (optind < argc) {
    std::fprintf(stderr, "orbd-sim: unexpected argument: %s\n", argv[optind]);
    return kExitUsage;
  }
  return -1;
}

void printLine(const std::string& line) {
  timespec now = {};
  clock_gettime(CLOCK_REALTIME, &now);
  tm local = {};
  localtime_r(&now.tv_sec, &local);
  char time[16];
  std::strftime(time, sizeof(time), "%H:%M:%S", &local);
  std::printf("%s.%03ld %s\n", time, now.tv_nsec / 1000000, line.c_str());
  std::fflush(stdout);
}

}  // namespace

int main(int argc, char** argv) {
  Arguments arguments;
  const int status = parseArguments(argc, argv, arguments);
  if (status >= 0) return status;
  arguments.options.record = false;
  if (!arguments.quiet) arguments.options.log = printLine;

  // Blocked before any thread starts, so that every thread inherits it and only sigwait takes them.
  sigset_t ending;
  sigemptyset(&ending);
  sigaddset(&ending, SIGINT);
  sigaddset(&ending, SIGTERM);
  pthread_sigmask(SIG_BLOCK, &ending, nullptr);
  // A reader of the log that goes away does not take the daemon with it.
  signal(SIGPIPE, SIG_IGN);

  orbsim::Daemon daemon(arguments.options);
  arguments.faults.prepare(daemon);
  if (!daemon.start()) {
    std::fprintf(stderr, "orbd-sim: %s\n", daemon.error().c_str());
    return kExitFailed;
  }
  arguments.faults.apply(daemon);
  int signal = 0;
  while (sigwait(&ending, &signal) != 0) {
  }
  daemon.stop();
  return EXIT_SUCCESS;
}
