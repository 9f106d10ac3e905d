// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

// orbdiag: a diagnostic tool for programs that run with the desktop's libdiag. It sends one request
// to the program's control socket and prints the reply.

#include <sys/socket.h>
#include <sys/time.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <optional>
#include <string>

#include "DiagText.h"
#include "UniqueFd.h"
#include "orbtool/CommandLine.h"
#include "orbtool/Run.h"
#include "orbtool/SocketAddress.h"

namespace {

constexpr size_t kMaxPayloadSize = 0xFFFF;
constexpr char kCommand[] = "command ff 12 89 ";
constexpr time_t kTimeout = 10;  // seconds

const char kFooter[] =
    "Exit status: 0 done, 1 refused or no program on the socket, 2 wrong arguments.\n"
    "Example: orbdiag command 0102ff --socket /tmp/diag.4711";

struct Arguments {
  std::string socket;
  std::string payload;
  std::string request;
};

std::string checkPayload(const std::string& text) {
  const bool good = text.size() % 2 == 0 && text.size() <= 2 * kMaxPayloadSize &&
                    text.find_first_not_of("0123456789abcdefABCDEF") == std::string::npos;
  if (good) return "";
  return "not a payload of at most 65535 bytes in hexadecimal: " + text.substr(0, 40);
}

void addRequests(CLI::App& app, Arguments& arguments) {
  app.footer(kFooter);
  app.require_subcommand(1);
  app.fallthrough();  // options are allowed after the request
  app.add_option("-s,--socket", arguments.socket,
                 "The program's socket, with its process id in place of \"%p\"")
      ->type_name("PATH")
      ->envname("ORB_DIAG_SOCKET");
  app.add_subcommand("on", "Request log packets");
  app.add_subcommand("off", "Stop log packets");
  app.add_subcommand(
      "status", "Print whether log packets are requested, where they go and how many were written");
  app.add_subcommand("command", "Send a diagnostic command")
      ->add_option("HEX", arguments.payload, "Its payload: two digits for each byte")
      ->required()
      ->check(checkPayload);
}

// An exit status if the arguments are wrong.
std::optional<int> checkArguments(const orbtool::CommandLine& line, Arguments& arguments) {
  if (arguments.socket.empty()) return line.refuse("no socket: give --socket or ORB_DIAG_SOCKET");
  if (arguments.socket.size() > orbtool::SocketAddress::kMaxPath)
    return line.refuse("the socket's path is too long");
  if (arguments.socket.find("%p") != std::string::npos)
    return line.refuse("which program? Give --socket with its process id for %p");
  return std::nullopt;
}

bool sendAndReceive(int fd, const Arguments& arguments, std::string& reply) {
  const timeval limit = {kTimeout, 0};
  setsockopt(fd, SOL_SOCKET, SO_SNDTIMEO, &limit, sizeof limit);
  setsockopt(fd, SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof limit);
  if (orbtool::SocketAddress(arguments.socket).connect(fd) != 0) return false;
  const std::string& request = arguments.request;
  if (send(fd, request.data(), request.size(), MSG_NOSIGNAL) < 0) return false;
  reply.resize(4096);
  const ssize_t size = recv(fd, reply.data(), reply.size(), 0);
  reply.resize(size > 0 ? static_cast<size_t>(size) : 0);
  if (size == 0) errno = ECONNRESET;  // the program went away
  return size > 0;
}

int run(int argc, char** argv) {
  Arguments arguments;
  orbtool::CommandLine line("orbdiag",
                            "Act as the diagnostic service for a running program that was started "
                            "with ORB_DIAG_SOCKET.");
  addRequests(line.app(), arguments);
  std::optional<int> status = line.parse(argc, argv);
  if (!status) status = checkArguments(line, arguments);
  if (status) return *status;
  const std::string request = line.app().get_subcommands().front()->get_name();
  arguments.request = request == "command" ? kCommand + arguments.payload : request;

  const UniqueFd fd(socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0));
  std::string reply;
  if (fd.get() < 0 || !sendAndReceive(fd.get(), arguments, reply)) {
    const char* const reason =
        errno == EAGAIN ? "no answer within 10 seconds" : std::strerror(errno);
    std::fprintf(stderr, "orbdiag: %s: %s\n", arguments.socket.c_str(), reason);
    return orbtool::kExitFailed;
  }
  const bool done = reply.compare(0, 3, "ok ") == 0;
  const std::string text = reply.substr(std::min(reply.find(' '), reply.size() - 1) + 1);
  std::fprintf(done ? stdout : stderr, "%s%s\n",
               done ? "" : "orbdiag: ", diaghost::maskControls(text).c_str());
  return done ? orbtool::kExitDone : orbtool::kExitFailed;
}

}  // namespace

int main(int argc, char** argv) {
  return orbtool::runTool("orbdiag", [&] { return run(argc, argv); });
}
