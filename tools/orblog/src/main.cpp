// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
// orblog: reads the encrypted log files of the client library.
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <string>

#include "Commands.h"

namespace orblog {
namespace {

const char kHelp[] =
    "Usage: orblog COMMAND [OPTIONS]...\n"
    "Read the encrypted log files of the library, with the private key that they were made for.\n"
    "\n"
    "  decrypt FILE|DIR...      Print the lines of log files in the order of time.\n"
    "  info FILE|DIR...         Tell what log files hold.\n"
    "  keygen                   Make a key pair and a log configuration file.\n"
    "\n"
    "  -h, --help               Print this text, or after a command that command's, and exit.\n"
    "  -V, --version            Print the version and exit.\n"
    "\n"
    "Exit status: 0 done, 1 something could not be read or written, 2 wrong arguments.\n"
    "Examples:\n"
    "  orblog keygen --out keys\n"
    "  orblog decrypt --key keys/orb_log_private.pem /data/vendor/orb_logs\n"
    "  orblog info /data/vendor/orb_logs/main\n";

struct Command {
  const char* name;
  int (*run)(int argc, char** argv);
};

constexpr Command kCommands[] = {{"decrypt", runDecrypt}, {"info", runInfo}, {"keygen", runKeygen}};

int run(int argc, char** argv) {
  const std::string word = argc > 1 ? argv[1] : "";
  for (const Command& command : kCommands) {
    if (word != command.name) continue;
    // getopt names the program by its first word.
    std::string name = "orblog " + word;
    argv[1] = name.data();
    return command.run(argc - 1, argv + 1);
  }
  if (word == "-h" || word == "--help") {
    std::fputs(kHelp, stdout);
  } else if (word == "-V" || word == "--version") {
    std::puts("orblog " ORBLOG_VERSION);
  } else {
    if (word.empty()) {
      std::fputs("orblog: no command given; try orblog --help\n", stderr);
    } else {
      std::fprintf(stderr, "orblog: no such %s: %s; try orblog --help\n",
                   word[0] == '-' ? "option" : "command", word.c_str());
    }
    return kExitUsage;
  }
  return std::fflush(stdout) == 0 ? kExitDone : kExitFailed;
}

}  // namespace

int refuse(const char* command, const char* format, ...) {
  std::fprintf(stderr, "orblog %s: ", command);
  va_list arguments;
  va_start(arguments, format);
  std::vfprintf(stderr, format, arguments);
  va_end(arguments);
  std::fprintf(stderr, "; try orblog %s --help\n", command);
  return kExitUsage;
}

}  // namespace orblog

int main(int argc, char** argv) { return orblog::run(argc, argv); }
