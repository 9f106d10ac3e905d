// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

// orbd-sim without a command: acts as the daemon until a signal ends it.

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Commands.h"
#include "Program.h"
#include "orbsim/ControlSocket.h"
#include "orbsim/Daemon.h"
#include "orbsim/Faults.h"
#include "orbsim/Recording.h"
#include "orbsim/Replay.h"
#include "orbtool/Run.h"

namespace orbsim {
namespace {

constexpr char kFooterHead[] = "Faults, to test the error paths of an application:\n";
constexpr char kFooterEnd[] =
    "\n"
    "SIGINT, SIGTERM or SIGHUP ends it; a second signal ends it at once.\n"
    "Exit status: 0 ended by a signal, 1 the socket cannot be served, 2 wrong arguments.\n"
    "Examples: orbd-sim --interval 100 --seed 7\n"
    "          orbd-sim --faults silent,connections=1\n"
    "          orbd-sim --trace --json";

struct Arguments {
  std::string socket = kSocketPath;
  std::string interval = "500";
  std::string seed = "1";
  std::string faults;
  std::string replay;
  double speed = 1;
  std::string begin;
  std::string control;
  bool trace = false;
  bool json = false;
  bool quiet = false;
};

bool parseNumber(const std::string& text, unsigned long long limit, unsigned long long& value) {
  if (text.empty() || text.find_first_not_of("0123456789") != std::string::npos) return false;
  errno = 0;
  value = std::strtoull(text.c_str(), nullptr, 10);
  return errno == 0 && value <= limit;
}

CLI::Validator numberUpTo(unsigned long long limit, const std::string& what) {
  return CLI::Validator(
      [limit, what](std::string& text) {
        unsigned long long value = 0;
        return parseNumber(text, limit, value) ? std::string() : "not " + what + ": " + text;
      },
      "");
}

unsigned long long numberOf(const std::string& text) {
  unsigned long long value = 0;
  parseNumber(text, std::numeric_limits<unsigned long long>::max(), value);
  return value;
}

int fail(const std::string& reason) {
  std::fprintf(stderr, "orbd-sim: %s\n", reason.c_str());
  return orbtool::kExitFailed;
}

// False if LIST is not a list of services. With an empty list, time begins with the first report.
bool setBegin(const std::string& list, ModelSettings& model) {
  if (list.empty()) return true;
  model.begin = Begin::kReporting;
  for (size_t start = 0; start <= list.size();) {
    const size_t comma = std::min(list.find(',', start), list.size());
    const uint32_t service = serviceNamed(list.substr(start, comma - start));
    if (service == 0) return false;
    model.beginWith.insert(service);
    start = comma + 1;
  }
  return true;
}

int serve(const Arguments& arguments) {
  Output output(arguments.json);
  Options options;
  options.socketPath = arguments.socket;
  options.reportInterval = std::chrono::milliseconds(numberOf(arguments.interval));
  options.seed = numberOf(arguments.seed);
  options.record = false;
  if (!arguments.quiet) options.log = output.log();
  if (arguments.trace) options.trace = output.trace();
  Faults faults;
  std::string error;
  if (!arguments.faults.empty()) faults.parse(arguments.faults, error);  // checked before
  std::vector<RecordedEvent> events;
  if (!arguments.replay.empty() && !readRecording(arguments.replay, events, error))
    return fail(error);

  setBegin(arguments.begin, options.model);

  holdSignals();
  Daemon daemon(options);
  ControlSocket control(daemon);
  faults.prepare(daemon);
  std::optional<Replay> replay;
  if (!arguments.replay.empty()) {
    replay.emplace(daemon, events, arguments.speed);
    daemon.log("replaying " + std::to_string(replay->connections()) + " connections of " +
               arguments.replay);
  }
  if (!daemon.start()) return fail(daemon.error());
  faults.apply(daemon);
  if (!arguments.control.empty() && !control.open(arguments.control)) return fail(control.error());
  waitForEnd();
  control.close();
  daemon.stop();
  return orbtool::kExitDone;
}

}  // namespace

CLI::Validator placeToListen() {
  return CLI::Validator([](std::string& path) { return SocketPlace::whyWrong(path); }, "");
}

void addTraceOptions(CLI::App& app, bool& trace, bool& json) {
  CLI::Option* const option = app.add_flag(
      "-t,--trace", trace, "Print each handshake record and each frame in decoded form");
  app.add_flag("-j,--json", json, "Print the trace and the log as JSON, one object per line")
      ->needs(option);
}

Command addServe(orbtool::CommandLine& line) {
  const auto arguments = std::make_shared<Arguments>();
  CLI::App& app = line.app();
  app.add_option("-s,--socket", arguments->socket,
                 "Listen on PATH. The directory must exist. Only the directory of the default path "
                 "is created if it is missing, and removed at the end.")
      ->type_name("PATH")
      ->default_str(kSocketPath)
      ->take_last()
      ->check(placeToListen());
  app.add_option("-i,--interval", arguments->interval,
                 "Send a report, or play a step of a handoff, every MS milliseconds to clients "
                 "that requested it; 0: never.")
      ->type_name("MS")
      ->default_str(arguments->interval)
      ->take_last()
      ->check(numberUpTo(86400000, "a number of milliseconds"));
  app.add_option("-S,--seed", arguments->seed,
                 "Use N as the random seed of the models of link and handoffs.")
      ->type_name("N")
      ->default_str(arguments->seed)
      ->take_last()
      ->check(numberUpTo(std::numeric_limits<unsigned long long>::max(), "a number"));
  app.add_option("-f,--faults", arguments->faults,
                 "Misbehave as the words in LIST say, separated by commas; see below.")
      ->type_name("LIST")
      ->take_last()
      ->check(CLI::Validator(
          [](std::string& list) {
            std::string error;
            Faults().parse(list, error);
            return error;
          },
          ""));
  app.add_option("-b,--begin", arguments->begin,
                 "Start the model's time, and all reports, when clients have requested reports of "
                 "each service in LIST: lce, lle, lli, separated by commas. [Default: when the "
                 "first client requests reports]")
      ->type_name("LIST")
      ->take_last()
      ->check(CLI::Validator(
          [](std::string& list) {
            ModelSettings model;
            return setBegin(list, model) ? std::string() : "not a list of services: " + list;
          },
          ""));
  app.add_option("-c,--control", arguments->control,
                 "Accept orders of 'orbd-sim ctl' on PATH, from the same user only.")
      ->type_name("PATH")
      ->take_last()
      ->check(placeToListen());
  app.add_option(
         "-R,--replay", arguments->replay,
         "Send to clients what the daemon sent in the recording FILE; 'orbd-sim relay' makes "
         "recordings.")
      ->type_name("FILE")
      ->take_last()
      ->excludes("--interval", "--seed", "--faults", "--begin");
  app.add_option("-x,--speed", arguments->speed,
                 "Replay X times as fast as recorded: 0.001 to 1000.")
      ->type_name("X")
      ->default_str("1")
      ->take_last()
      ->check(CLI::Validator(
          [](std::string& text) {
            double speed = 0;
            return CLI::detail::lexical_cast(text, speed) && speed >= 0.001 && speed <= 1000
                       ? std::string()
                       : "not a number from 0.001 to 1000: " + text;
          },
          ""))
      ->needs("--replay");
  addTraceOptions(app, arguments->trace, arguments->json);
  app.add_flag("-q,--quiet", arguments->quiet, "Log nothing.");
  app.footer(std::string(kFooterHead) + Faults::kHelp + kFooterEnd);
  return {&app, [arguments] { return serve(*arguments); }};
}

}  // namespace orbsim
