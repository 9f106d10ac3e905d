// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

// orbd-sim relay: forwards data between applications and a daemon until a signal ends it.

#include <cstdio>
#include <memory>
#include <string>

#include "Commands.h"
#include "Program.h"
#include "orbsim/Relay.h"
#include "orbtool/Run.h"

namespace orbsim {
namespace {

struct Arguments {
  std::string to;
  std::string socket = kSocketPath;
  std::string record;
  bool trace = false;
  bool json = false;
  bool quiet = false;
};

int fail(const std::string& reason) {
  std::fprintf(stderr, "orbd-sim relay: %s\n", reason.c_str());
  return orbtool::kExitFailed;
}

int relay(const Arguments& arguments) {
  Output output(arguments.json);
  RelayOptions options;
  options.socketPath = arguments.socket;
  options.daemonPath = arguments.to;
  if (!arguments.quiet) options.log = output.log();
  if (arguments.trace) options.trace = output.trace();
  RecordingWriter recording;
  if (!arguments.record.empty()) {
    if (!recording.open(arguments.record)) return fail(recording.error());
    options.record = [&](const RecordedEvent& event) {
      if (!recording.error().empty()) return;
      recording.write(event);
      if (!recording.error().empty()) fail(recording.error() + "; the recording stops here");
    };
  }
  holdSignals();
  Relay relay(options);
  if (!relay.start()) return fail(relay.error());
  waitForEnd();
  relay.stop();
  return recording.error().empty() ? orbtool::kExitDone : orbtool::kExitFailed;
}

}  // namespace

Command addRelay(orbtool::CommandLine& line) {
  const auto arguments = std::make_shared<Arguments>();
  CLI::App& app = *line.app().add_subcommand(
      "relay", "Forward data between applications and a daemon; trace and record it");
  app.add_option("-T,--to", arguments->to, "The daemon's own socket")
      ->type_name("PATH")
      ->required()
      ->take_last()
      ->check(placeToListen());
  app.add_option("-s,--socket", arguments->socket, "The socket for applications")
      ->type_name("PATH")
      ->default_str(kSocketPath)
      ->take_last()
      ->check(placeToListen());
  app.add_option("-r,--record", arguments->record,
                 "Write the forwarded data to FILE, for orbd-sim --replay")
      ->type_name("FILE")
      ->take_last();
  addTraceOptions(app, arguments->trace, arguments->json);
  app.add_flag("-q,--quiet", arguments->quiet, "Log nothing");
  app.footer(
      "SIGINT and SIGTERM end it.\n"
      "Exit status: 0 ended by a signal, 1 the socket cannot be served or the recording cannot\n"
      "be written, 2 wrong arguments.\n"
      "Example: mv /dev/socket/orb /dev/socket/orb.daemon\n"
      "         orbd-sim relay --to /dev/socket/orb.daemon --trace --record session.jsonl");
  return {&app, [arguments] { return relay(*arguments); }};
}

}  // namespace orbsim
