// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

// orbdiag: a diagnostic tool for programs that run with the desktop's libdiag. It sends one request
// to the program's control socket and prints the reply.

#include <getopt.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <sys/un.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "DiagText.h"
#include "UniqueFd.h"

namespace {

constexpr int kExitFailed = 1;
constexpr int kExitUsage = 2;

constexpr size_t kMaxPayloadSize = 0xFFFF;
constexpr char kCommand[] = "command ff 12 89 ";
constexpr time_t kTimeout = 10;  // seconds

const char kHelp[] =
    "Usage: orbdiag [OPTIONS] on|off|status\n"
    "       orbdiag [OPTIONS] command HEX\n"
    "Be the diagnostic service of a running program that was started with ORB_DIAG_SOCKET.\n"
    "\n"
    "  on, off      Ask for log packets, or ask for none any more.\n"
    "  status       Tell whether packets are wanted, where they go and how many have gone there.\n"
    "  command HEX  Send the diagnostic command with the payload HEX: two digits for each byte.\n"
    "\n"
    "  -s, --socket PATH  The program's socket, its process id in the place of \"%p\".\n"
    "                     [Default: $ORB_DIAG_SOCKET]\n"
    "  -h, --help         Print this text and exit.\n"
    "\n"
    "Exit status: 0 done, 1 refused or no program there, 2 wrong arguments.\n"
    "Example: orbdiag command 0102ff --socket /tmp/diag.4711\n";

struct Arguments {
  std::string socket;
  std::string request;
};

int wrongUse(const std::string& what) {
  std::fprintf(stderr, "orbdiag: %s; try --help\n", what.c_str());
  return kExitUsage;
}

bool isPayload(const std::string& text) {
  return text.size() % 2 == 0 && text.size() <= 2 * kMaxPayloadSize &&
         text.find_first_not_of("0123456789abcdefABCDEF") == std::string::npos;
}

// Both give the exit status when the program is to end now, -1 when it is to go on.
int parseRequest(int count, char** words, Arguments& arguments) {
  if (count == 0) return wrongUse("nothing to do");
  const std::string verb = words[0];
  const bool isCommand = verb == "command";
  if (!isCommand && verb != "on" && verb != "off" && verb != "status")
    return wrongUse("unknown request: " + verb);
  const int wanted = isCommand ? 2 : 1;
  if (count > wanted) return wrongUse(std::string("unexpected argument: ") + words[wanted]);
  if (count < wanted) return wrongUse("command needs a payload");
  if (isCommand && !isPayload(words[1]))
    return wrongUse(std::string("not a payload of at most 65535 bytes in hexadecimal: ") +
                    std::string(words[1]).substr(0, 40));
  arguments.request = isCommand ? kCommand + std::string(words[1]) : verb;
  return -1;
}

int parseArguments(int argc, char** argv, Arguments& arguments) {
  static const option kOptions[] = {{"socket", required_argument, nullptr, 's'},
                                    {"help", no_argument, nullptr, 'h'},
                                    {nullptr, 0, nullptr, 0}};
  const char* const path = std::getenv("ORB_DIAG_SOCKET");
  if (path != nullptr) arguments.socket = path;
  int choice = 0;
  while ((choice = getopt_long(argc, argv, "s:h", kOptions, nullptr)) != -1) {
    switch (choice) {
      case 's':
        arguments.socket = optarg;
        break;
      case 'h':
        std::fputs(kHelp, stdout);
        return EXIT_SUCCESS;
      default:
        return kExitUsage;  // getopt_long has said why
    }
  }
  const int status = parseRequest(argc - optind, argv + optind, arguments);
  if (status >= 0) return status;
  if (arguments.socket.empty()) return wrongUse("no socket: give --socket or ORB_DIAG_SOCKET");
  if (arguments.socket.size() >= sizeof(sockaddr_un::sun_path))
    return wrongUse("the socket's path is too long");
  if (arguments.socket.find("%p") != std::string::npos)
    return wrongUse("which program? Give --socket with its process id for %p");
  return -1;
}

bool sendAndReceive(int fd, const Arguments& arguments, std::string& reply) {
  const timeval limit = {kTimeout, 0};
  setsockopt(fd, SOL_SOCKET, SO_SNDTIMEO, &limit, sizeof limit);
  setsockopt(fd, SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof limit);
  sockaddr_un address = {};
  address.sun_family = AF_UNIX;
  std::memcpy(address.sun_path, arguments.socket.data(), arguments.socket.size());
  if (connect(fd, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) return false;
  const std::string& request = arguments.request;
  if (send(fd, request.data(), request.size(), MSG_NOSIGNAL) < 0) return false;
  reply.resize(4096);
  const ssize_t size = recv(fd, reply.data(), reply.size(), 0);
  reply.resize(size > 0 ? static_cast<size_t>(size) : 0);
  if (size == 0) errno = ECONNRESET;  // the program went away
  return size > 0;
}

}  // namespace

int main(int argc, char** argv) {
  Arguments arguments;
  const int status = parseArguments(argc, argv, arguments);
  if (status >= 0) return status;

  const UniqueFd fd(socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0));
  std::string reply;
  if (fd.get() < 0 || !sendAndReceive(fd.get(), arguments, reply)) {
    const char* const reason =
        errno == EAGAIN ? "no answer within 10 seconds" : std::strerror(errno);
    std::fprintf(stderr, "orbdiag: %s: %s\n", arguments.socket.c_str(), reason);
    return kExitFailed;
  }
  const bool done = reply.compare(0, 3, "ok ") == 0;
  const std::string text = reply.substr(std::min(reply.find(' '), reply.size() - 1) + 1);
  std::fprintf(done ? stdout : stderr, "%s%s\n",
               done ? "" : "orbdiag: ", diaghost::maskControls(text).c_str());
  return done ? EXIT_SUCCESS : kExitFailed;
}
