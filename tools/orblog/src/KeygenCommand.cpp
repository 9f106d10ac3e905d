// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
// orblog keygen: makes a key pair and the library's log configuration file.
#include <getopt.h>

#include <cerrno>
#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "Commands.h"
#include "orblog/Format.h"
#include "orblog/KeyFiles.h"
#include "orblog/Text.h"

namespace orblog {
namespace {

const char kHelp[] =
    "Usage: orblog keygen --out DIR [OPTIONS]\n"
    "Make an RSA key pair and a log configuration file with its public key. Writes\n"
    "orb_log_private.pem (readable by its owner only), orb_log_public.pem and orb_log_config\n"
    "into DIR, which is made when it is missing.\n"
    "\n"
    "  -o, --out DIR            Where to write.\n"
    "  -b, --bits N             Size of the key, 2048 to 4096: more does not fit into the 512\n"
    "                           bytes that a log file has for it. [Default: 3072]\n"
    "  -r, --records N          Records per log file, 3000 to 30000. [Default: 10000]\n"
    "  -n, --files N            Log files kept, 3 to 10. [Default: 5]\n"
    "  -p, --passphrase-file FILE\n"
    "                           Encrypt the private key (AES-256) with the first line of FILE.\n"
    "                           [Default: not encrypted]\n"
    "  -F, --force              Replace files that exist. Logs made for a private key that is\n"
    "                           replaced cannot be read any more.\n"
    "  -h, --help               Print this text and exit.\n"
    "\n"
    "Exit status: 0 done, 1 a file exists or cannot be written, 2 wrong arguments.\n"
    "Example: orblog keygen --out keys --bits 4096 --records 30000 --files 10\n";

// The exit status when the program is to end now, -1 when it is to go on.
int parseNumber(const char* option, const char* text, uint64_t least, uint64_t greatest,
                uint64_t& value) {
  char* end = nullptr;
  errno = 0;
  const unsigned long long number = std::strtoull(text, &end, 10);
  // strtoull takes signs and blanks
  if (*text < '0' || *text > '9' || *end != '\0' || errno != 0 || number < least ||
      number > greatest)
    return refuse("keygen", "%s: not a number from %" PRIu64 " to %" PRIu64 ": %s", option, least,
                  greatest, text);
  value = number;
  return -1;
}

int parseBits(const char* text, int& bits) {
  uint64_t number = 0;
  char* end = nullptr;
  if (std::strtoull(text, &end, 10) > static_cast<unsigned>(kLargestKeyBits) && *end == '\0' &&
      *text != '-')
    return refuse("keygen", "--bits: a log file has room for a key of at most %d bits: %s",
                  kLargestKeyBits, text);
  const int status = parseNumber("--bits", text, kSmallestKeyBits, kLargestKeyBits, number);
  bits = static_cast<int>(number);
  return status;
}

int parseArguments(int argc, char** argv, KeyFilesRequest& request) {
  static const option kOptions[] = {{"out", required_argument, nullptr, 'o'},
                                    {"bits", required_argument, nullptr, 'b'},
                                    {"records", required_argument, nullptr, 'r'},
                                    {"files", required_argument, nullptr, 'n'},
                                    {"passphrase-file", required_argument, nullptr, 'p'},
                                    {"force", no_argument, nullptr, 'F'},
                                    {"help", no_argument, nullptr, 'h'},
                                    {nullptr, 0, nullptr, 0}};
  uint64_t files = request.files;
  int choice = 0, status = -1;
  while (status < 0 &&
         (choice = getopt_long(argc, argv, "o:b:r:n:p:Fh", kOptions, nullptr)) != -1) {
    switch (choice) {
      case 'o':
        request.directory = optarg;
        break;
      case 'b':
        status = parseBits(optarg, request.bits);
        break;
      case 'r':
        status = parseNumber("--records", optarg, kLeastRecords, kMostRecords, request.records);
        break;
      case 'n':
        status = parseNumber("--files", optarg, kLeastFiles, kMostFiles, files);
        break;
      case 'p':
        request.passphraseFile = optarg;
        break;
      case 'F':
        request.force = true;
        break;
      case 'h':
        std::fputs(kHelp, stdout);
        return kExitDone;
      default:
        return kExitUsage;  // getopt_long has said why
    }
  }
  if (status >= 0) return status;
  if (optind < argc) return refuse("keygen", "unexpected argument: %s", argv[optind]);
  if (request.directory.empty()) return refuse("keygen", "--out is missing");
  request.files = static_cast<uint8_t>(files);
  return -1;
}

}  // namespace

int runKeygen(int argc, char** argv) {
  KeyFilesRequest request;
  const int status = parseArguments(argc, argv, request);
  if (status >= 0) return status;
  std::vector<std::string> notes;
  std::string error;
  const bool made = makeKeyFiles(request, notes, error);
  for (const std::string& note : notes)
    std::fprintf(stderr, "orblog: %s\n", terminalSafe(note).c_str());
  if (!made) {
    std::fprintf(stderr, "orblog: %s\n", terminalSafe(error).c_str());
    return kExitFailed;
  }
  const KeyFiles paths(terminalSafe(request.directory));
  std::printf(
      "%s\n  The private key. Keep it from the device and safe: it alone opens the logs.\n"
      "%s\n  The public key.\n"
      "%s\n  Put it on the device as /data/vendor/orb_logs/config/orb_log_config and start the\n"
      "  application anew. To read the logs:\n"
      "  orblog decrypt --key %s /data/vendor/orb_logs\n",
      paths.privateKey.c_str(), paths.publicKey.c_str(), paths.configuration.c_str(),
      paths.privateKey.c_str());
  return std::fflush(stdout) == 0 ? kExitDone : kExitFailed;
}

}  // namespace orblog
