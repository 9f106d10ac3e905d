// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
// orbctl: a command-line client of the daemon. This file has the command line.
#include <strings.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <tuple>
#include <vector>

#include "Commands.h"
#include "orbctl/Names.h"
#include "orbctl/QuietLog.h"
#include "orbctl/SocketProbe.h"
#include "orbctl/Watch.h"
#include "orbtool/CommandLine.h"
#include "orbtool/Run.h"

namespace orbctl {
namespace {

constexpr char kStatusFooter[] =
    "status connects to the socket as a client, completes the handshake and disconnects. Then the\n"
    "library enables and disables each service. Each step and each service may take --timeout.\n"
    "\n"
    "Exit status:\n"
    "   0  the daemon is well and enables all services\n"
    "   1  another system call failed              2  wrong arguments\n"
    "   3  no folder or no socket                  4  the path is not a socket\n"
    "   5  no permission                           6  refused: nobody listens\n"
    "   7  connections are not accepted            8  accepted, but no record of the handshake\n"
    "   9  closed in the handshake                10  a wrong record in the handshake\n"
    "  11  a service is refused with a status     12  a service is down (SERVICE_DOWN)\n"
    "  13  a service does not answer\n"
    "With --socket and another path the services are not asked. If several services have a\n"
    "problem, the first one in the order lce, lle, lli gives the exit status.";

constexpr char kWatchFooter[] =
    "On a terminal the screen is redrawn; q ends it. Otherwise each event is a line.\n"
    "Exit status: 0 --seconds, --count or q ended it; 1 no service answered within --seconds, or "
    "the\n"
    "output could not be written; 2 wrong arguments; 128 plus the number of the signal that ended "
    "it\n"
    "(Ctrl-C: 130).";

constexpr char kReportFooter[] =
    "Criteria and reporting last as long as this process, because the daemon forgets them when "
    "the\n"
    "connection ends. So reports are printed here until the end, as watch does.\n"
    "Exit status: 0 --seconds, --count or q ended it; 1 the daemon refused, no answer came within\n"
    "--seconds, or the output could not be written; 2 wrong arguments; 128 plus the number of the\n"
    "signal that ended it.";

constexpr char kPlotFooter[] =
    "gnuplot draws the picture; it must be in a directory of PATH.\n"
    "Exit status: 0 done, 1 reading, drawing or writing failed, 2 wrong arguments.";

// The values of all options of all commands.
struct Arguments {
  StatusSettings status;
  double timeout = 2;
  WatchSettings watch;
  std::vector<std::string> services, actions = {"start"};
  std::vector<uint32_t> firstList, secondList;
  std::string network = "none", color = "auto";
  double seconds = 0;
  uint64_t count = 0;
  PlotSettings plot;
  std::string size = "1200x700";
};

template <class Value, size_t kCount>
std::vector<std::string> wordsOf(const Words<Value, kCount>& words) {
  std::vector<std::string> all;
  for (const auto& word : words) all.emplace_back(word.first);
  return all;
}

CLI::Validator oneOf(const std::vector<std::string>& words) {
  return CLI::IsMember(words, CLI::ignore_case);
}

// A decimal number, digits only. The parser would read 010 as octal 8.
CLI::Validator wholeNumber(uint64_t least, uint64_t greatest) {
  return CLI::Validator(
      [least, greatest](std::string& text) -> std::string {
        uint64_t number = 0;
        const char* const end = text.data() + text.size();
        const auto [rest, error] = std::from_chars(text.data(), end, number);
        if (error != std::errc() || rest != end || number < least || number > greatest)
          return "not a whole number from " + std::to_string(least) + " to " +
                 std::to_string(greatest) + ": " + text;
        text = std::to_string(number);
        return {};
      },
      "");
}

CLI::Validator numberFrom(double least, double greatest) {
  return CLI::Validator(
      [least, greatest](const std::string& text) -> std::string {
        char* end = nullptr;
        const double number = std::strtod(text.c_str(), &end);
        if (!text.empty() && *end == '\0' && number >= least && number <= greatest) return {};
        std::array<char, 64> range;
        (void)std::snprintf(range.data(), range.size(), "%.10g to %.10g", least, greatest);
        return std::string("not a number from ") + range.data() + ": " + text;
      },
      "");
}

constexpr uint64_t kMostCount = std::numeric_limits<uint64_t>::max();
constexpr uint64_t kMostCriterion = std::numeric_limits<uint32_t>::max();
// The maximum time that the clocks can represent.
constexpr double kMostSeconds = 1e9;

void addStatus(CLI::App& app, Arguments& arguments) {
  CLI::App* const command = app.add_subcommand("status", "Check the daemon and diagnose problems");
  command->add_option("-s,--socket", arguments.status.socket, "Check only the socket at PATH")
      ->type_name("PATH")
      ->default_str(kSocketPath);
  command
      ->add_option("-t,--timeout", arguments.timeout,
                   "Wait at most S seconds for each step: 0.1 to 60")
      ->type_name("S")
      ->check(numberFrom(0.1, 60))
      ->default_str("2");
  command->add_flag("-j,--json", arguments.status.json,
                    "Print one JSON object: socket, state, reason, came, session, services, "
                    "not_asked, next, exit");
  command->footer(kStatusFooter);
}

// The options that watch and report have in common.
void addOutput(CLI::App& command, Arguments& arguments) {
  command.add_option("-n,--count", arguments.count, "End after N reports and indications")
      ->type_name("N")
      ->transform(wholeNumber(1, kMostCount));
  command
      .add_option("-t,--seconds", arguments.seconds,
                  "End after N seconds; a decimal number is allowed")
      ->type_name("N")
      ->check(numberFrom(0.001, kMostSeconds));
  command.add_flag("-j,--json", arguments.watch.json, "Print each event as a JSON object");
  command
      .add_option("-c,--csv", arguments.watch.csv,
                  "Also write the events to FILE and replace it; - for standard output")
      ->type_name("FILE");
  command.add_option("--color", arguments.color, "auto, always or never; see also NO_COLOR")
      ->type_name("WHEN")
      ->check(oneOf({"auto", "always", "never"}))
      ->default_str("auto");
}

void addWatch(CLI::App& app, Arguments& arguments) {
  CLI::App* const command =
      app.add_subcommand("watch", "Show what the services send; the daemon may come and go");
  command->add_option("SERVICE", arguments.services, "lce, lle or lli; default: all services")
      ->check(oneOf({"lce", "lle", "lli"}));
  addOutput(*command, arguments);
  command->footer(kWatchFooter);
}

void addReportLce(CLI::App& report, Arguments& arguments) {
  CLI::App* const command = report.add_subcommand("lce", "Link capacity");
  const std::string list =
      " of criteria, N,N,...: up to 20 numbers from 0 to 4294967295, in the daemon's unit";
  const std::string value = " single criterion, 0 to 4294967295, in the daemon's unit";
  for (const auto& [name, text, numbers] :
       {std::tuple{"--first", "The first list", &arguments.firstList},
        std::tuple{"--second", "The second list", &arguments.secondList}})
    command->add_option(name, *numbers, text + list)
        ->type_name("LIST")
        ->delimiter(',')
        ->transform(wholeNumber(0, kMostCriterion));
  LceReportingCriteria& criteria = arguments.watch.requests.lceCriteria;
  for (const auto& [name, text, number] :
       {std::tuple{"--value1", "The first", &criteria.criteriaValue1},
        std::tuple{"--value2", "The second", &criteria.criteriaValue2}})
    command->add_option(name, *number, text + value)
        ->type_name("N")
        ->transform(wholeNumber(0, kMostCriterion))
        ->default_str("0");
  command
      ->add_option("--network", arguments.network,
                   "The access network of the criteria: none, wcdma, lte or nr5g")
      ->type_name("NETWORK")
      ->check(oneOf(wordsOf(kNetworkWords)))
      ->default_str("none");
  CLI::Option* const action =
      command
          ->add_option("--action", arguments.actions,
                       "The actions after the criteria are set, in order: start, stop, reset; "
                       "separated by commas")
          ->type_name("ACTION")
          ->delimiter(',')
          ->check(oneOf(wordsOf(kActionWords)))
          ->default_str("start");
  command
      ->add_flag("--last", arguments.watch.requests.lastReport, "Print the latest report and end")
      ->excludes(action);
  addOutput(*command, arguments);
  command->footer(kReportFooter);
}

void addReportLle(CLI::App& report, Arguments& arguments) {
  CLI::App* const command = report.add_subcommand("lle", "Link latency");
  command
      ->add_option("--criteria", arguments.watch.requests.lleCriteria,
                   "When to report: 0 to 4294967295; the daemon defines the meaning")
      ->type_name("N")
      ->transform(wholeNumber(0, kMostCriterion))
      ->default_str("1");
  command->add_flag("--last", arguments.watch.requests.lastReport,
                    "Print the latest report and end");
  addOutput(*command, arguments);
  command->footer(kReportFooter);
}

void addPlot(CLI::App& app, Arguments& arguments) {
  CLI::App* const command =
      app.add_subcommand("plot", "Draw capacity, latency and handoffs of a --csv recording");
  command->add_option("FILE", arguments.plot.input, "The recording; - for standard input")
      ->required();
  command->add_option("-o,--output", arguments.plot.output, "The picture: FILE.svg or FILE.png")
      ->type_name("FILE")
      ->required();
  command->add_option("--size", arguments.size, "The size in pixels: 300x200 to 8000x8000")
      ->type_name("WxH")
      ->default_str(arguments.size);
  command->footer(kPlotFooter);
}

bool endsIn(const std::string& text, const char* end) {
  const std::string wanted = end;
  return text.size() > wanted.size() &&
         strcasecmp(text.c_str() + (text.size() - wanted.size()), end) == 0;
}

int plot(const orbtool::CommandLine& line, const Arguments& arguments) {
  PlotSettings settings = arguments.plot;
  if (endsIn(settings.output, ".png")) {
    settings.form = PlotForm::kPng;
  } else if (!endsIn(settings.output, ".svg")) {
    return line.refuse("--output: neither .svg nor .png: " + settings.output);
  }
  char rest = 0;
  const bool read = std::sscanf(arguments.size.c_str(), "%5dx%5d%c", &settings.size.width,
                                &settings.size.height, &rest) == 2;
  const auto within = [](int number, int least) { return number >= least && number <= 8000; };
  if (!read || !within(settings.size.width, 300) || !within(settings.size.height, 200))
    return line.refuse("--size: not a size from 300x200 to 8000x8000: " + arguments.size);
  return runPlot(settings);
}

// False if the list is too long.
bool copyList(const std::vector<uint32_t>& from, uint32_t (&to)[LCE_REPORTING_CRITERIA_LIST_MAX],
              uint8_t& count) {
  if (from.size() > LCE_REPORTING_CRITERIA_LIST_MAX) return false;
  std::copy(from.begin(), from.end(), to);
  count = static_cast<uint8_t>(from.size());
  return true;
}

std::vector<Service> servicesOf(const std::vector<std::string>& words) {
  std::vector<Service> services;
  for (const Service service : kAllServices) {
    const bool named = std::any_of(words.begin(), words.end(), [&](const std::string& word) {
      return strcasecmp(word.c_str(), nameOf(service)) == 0;
    });
    if (named || words.empty()) services.push_back(service);
  }
  return services;
}

int watchOrReport(const orbtool::CommandLine& line, Arguments& arguments) {
  WatchSettings& settings = arguments.watch;
  settings.name = line.name();
  if (settings.json && settings.csv == "-")
    return line.refuse("--json and --csv - are both for standard output");
  if (arguments.seconds > 0)
    settings.time = std::chrono::milliseconds(static_cast<int64_t>(arguments.seconds * 1000));
  if (arguments.count > 0) settings.count = arguments.count;
  const auto is = [&](const char* word) { return strcasecmp(arguments.color.c_str(), word) == 0; };
  if (is("always")) settings.color = ColorChoice::kAlways;
  if (is("never")) settings.color = ColorChoice::kNever;
  settings.services = servicesOf(arguments.services);
  if (settings.requests.lastReport) settings.count = 1;
  LceReportingCriteria& criteria = settings.requests.lceCriteria;
  if (!copyList(arguments.firstList, criteria.firstList, criteria.firstListCount))
    return line.refuse("--first: more than 20 numbers");
  if (!copyList(arguments.secondList, criteria.secondList, criteria.secondListCount))
    return line.refuse("--second: more than 20 numbers");
  criteria.accessNetworkType = *valueOf(kNetworkWords, arguments.network);
  settings.requests.lceActions.clear();
  for (const std::string& action : arguments.actions)
    settings.requests.lceActions.push_back(*valueOf(kActionWords, action));
  return watch(settings);
}

int run(int argc, char** argv) {
  Arguments arguments;
  arguments.status.socket = daemonSocket();
  orbtool::CommandLine line("orbctl", "Check the link daemon and show what it sends.");
  CLI::App& app = line.app();
  app.require_subcommand(1);
  addStatus(app, arguments);
  addWatch(app, arguments);
  CLI::App* const report =
      app.add_subcommand("report", "Send criteria to a service and print its reports");
  report->require_subcommand(1);
  addReportLce(*report, arguments);
  addReportLle(*report, arguments);
  addPlot(app, arguments);
  if (const auto status = line.parse(argc, argv)) return *status;

  const std::string command = app.get_subcommands().front()->get_name();
  if (command == "status") {
    arguments.status.timeout =
        std::chrono::milliseconds(static_cast<int64_t>(arguments.timeout * 1000));
    return runStatus(arguments.status);
  }
  if (command == "plot") return plot(line, arguments);
  if (command == "report") {
    arguments.services = {report->get_subcommands().front()->get_name()};
    arguments.watch.endsWhenRefused = true;
  }
  return watchOrReport(line, arguments);
}

}  // namespace
}  // namespace orbctl

int main(int argc, char** argv) {
  const int status = orbtool::runTool("orbctl", [&] { return orbctl::run(argc, argv); });
  orbctl::QuietLog::forGood();
  return status;
}
