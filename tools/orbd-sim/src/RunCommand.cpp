// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

// orbd-sim run: plays a scenario for a command, on a separate socket.

#include <fcntl.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <optional>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "Commands.h"
#include "Program.h"
#include "RunProcess.h"
#include "orbsim/PrivateSocket.h"
#include "orbsim/ProgramPath.h"
#include "orbsim/Scenario.h"
#include "orbtool/Run.h"

extern char** environ;

namespace orbsim {
namespace {

// Tells the command the path of the socket; the redirection library reads it.
constexpr char kSocketVariable[] = "ORB_SOCKET";
// More directories that are writable in the sandbox.
constexpr char kBindVariable[] = "ORB_SANDBOX_BIND";
// The library that redirects connections of applications to that path.
constexpr char kRedirectLibrary[] = "liborb_redirect";
constexpr char kSandboxBeside[] = "orb-sandbox";
constexpr char kSandboxInSources[] = "scripts/sandbox";
constexpr char kOpenFiles[] = "/proc/self/fd/";
constexpr int kExitUnexpected = 3;

struct Arguments {
  std::string file;
  std::vector<std::string> command;
  std::string control;
  std::string log;
  bool trace = false;
  bool json = false;
  bool sandbox = false;
  bool noSandbox = false;
  int signals = -1;  // descriptor on which the parent outside the sandbox sends signal numbers
};

// In the directory of the program, or in the sources that contain the build tree; empty if there is
// none.
std::string findSandbox() {
  std::string folder = folderOf(programPath());
  const std::string beside = folder + "/" + kSandboxBeside;
  if (::access(beside.c_str(), X_OK) == 0) return beside;
  while (folder.size() > 1) {
    const std::string inSources = folder + "/" + kSandboxInSources;
    if (::access(inSources.c_str(), X_OK) == 0) return inSources;
    folder = folderOf(folder);
  }
  return {};
}

// Whether the command's connections are redirected to ORB_SOCKET.
bool redirected() {
  const char* const libraries = std::getenv("LD_PRELOAD");
  return libraries != nullptr && std::strstr(libraries, kRedirectLibrary) != nullptr;
}

// Whether the default path of the daemon can be used. Applications use it unless they are
// redirected. Root in a container has no sandbox and needs none, because it can create the
// directory.
bool ownsDefaultPlace() {
  if (redirected()) return false;
  if (::access(kSocketDirectory, W_OK) == 0) return true;
  return errno == ENOENT && ::access(folderOf(kSocketDirectory).c_str(), W_OK) == 0;
}

std::vector<std::string> environmentWith(const std::string& name, const std::string& value) {
  std::vector<std::string> all;
  const std::string start = name + "=";
  for (char** entry = environ; *entry != nullptr; ++entry) {
    if (std::strncmp(*entry, start.c_str(), start.size()) != 0) all.emplace_back(*entry);
  }
  all.push_back(start + value);
  return all;
}

int cannotStart(const std::string& command, int status) {
  std::fprintf(stderr, "orbd-sim run: cannot start %s: %s\n", command.c_str(),
               std::strerror(errno));
  return status;
}

// Raises each signal whose number the parent outside the sandbox sends.
void listenForSignals(int fd) {
  std::thread([fd] {
    unsigned char signal = 0;
    while (::read(fd, &signal, 1) == 1) ::kill(::getpid(), signal);
  }).detach();
}

// The daemon's log, and the trace if requested. It is created before its writers and closed or
// destroyed after them.
class Log {
 public:
  explicit Log(const Arguments& arguments) : mArguments(arguments) {}
  ~Log() { close(); }
  Log(const Log&) = delete;
  Log& operator=(const Log&) = delete;

  bool open(Options& options) {
    const std::string& name = mArguments.log;
    if (name.empty()) return true;
    mFile = name == "-" ? stderr : std::fopen(name.c_str(), "we");
    if (mFile == nullptr) return told(errno);
    mOutput.emplace(mArguments.json, mFile);
    options.log = mOutput->log();
    if (mArguments.trace) options.trace = mOutput->trace();
    return true;
  }
  // False if it could not be written completely.
  bool close() {
    if (mFile == nullptr) return true;
    int error = mOutput->finish();
    if (mFile != stderr && std::fclose(mFile) != 0 && error == 0) error = errno;
    mFile = nullptr;
    return error == 0 || told(error);
  }

 private:
  bool told(int error) const {
    std::fprintf(stderr, "orbd-sim run: %s: %s\n", mArguments.log.c_str(), std::strerror(error));
    return false;
  }

  const Arguments& mArguments;
  std::FILE* mFile = nullptr;
  std::optional<Output> mOutput;
};

int cannotPlay(const std::string& error) {
  std::fprintf(stderr, "orbd-sim run: %s\n", error.c_str());
  return orbtool::kExitFailed;
}

// Runs the command and returns its status.
int runCommand(const Arguments& arguments, const std::string& socket, RunProcess& process) {
  const auto environment = environmentWith(kSocketVariable, socket);
  const int status = process.start(arguments.command, environment, /*sheltered=*/false);
  if (status != 0) return cannotStart(arguments.command.front(), status);
  return process.wait([&process](int signal) { process.kill(signal); });
}

// Runs the daemon in this process and the command as a child.
int runHere(const Arguments& arguments, const Scenario& scenario) {
  RunProcess::prepare();
  if (arguments.signals >= 0) {
    ::fcntl(arguments.signals, F_SETFD, FD_CLOEXEC);
    listenForSignals(arguments.signals);
  }
  const PrivateSocket socket(ownsDefaultPlace() ? kSocketPath : "");
  if (socket.path().empty()) return cannotPlay(socket.error());
  if (socket.path() != kSocketPath && !redirected()) {
    std::fprintf(stderr,
                 "orbd-sim run: listening on %s; applications use this path only inside "
                 "'orb-sandbox --redirect'\n",
                 socket.path().c_str());
  }
  Options options;
  options.record = false;
  options.socketPath = socket.path();
  Log log(arguments);
  if (!log.open(options)) return orbtool::kExitFailed;
  ScenarioRun run(scenario, options);
  run.onEnd(RunProcess::askToEnd);
  if (!run.start()) return cannotPlay(run.error());
  const std::string error =
      arguments.control.empty() ? std::string() : run.control(arguments.control);
  if (!error.empty()) return cannotPlay(error);

  RunProcess process;
  const int status = runCommand(arguments, socket.path(), process);
  run.stop();
  const bool logged = log.close();
  if (process.cutShort() || !process.started()) return status;
  const auto failures = run.failures();
  for (const std::string& failure : failures) {
    std::fprintf(stderr, "orbd-sim run: %s\n", failure.c_str());
  }
  if (!failures.empty()) return kExitUnexpected;
  return status == 0 && !logged ? orbtool::kExitFailed : status;
}

std::string foldersToKeep(const Arguments& arguments, const std::string& program) {
  std::string folders;
  const auto add = [&folders](const std::string& folder) {
    char whole[PATH_MAX];
    if (::realpath(folder.c_str(), whole) == nullptr) return;
    folders += (folders.empty() ? "" : ":") + std::string(whole);
  };
  if (const char* const given = std::getenv(kBindVariable)) folders = given;
  add(folderOf(program));
  if (arguments.command.front().find('/') != std::string::npos) {
    add(folderOf(arguments.command.front()));
  }
  if (!arguments.control.empty()) add(folderOf(arguments.control));
  if (!arguments.log.empty() && arguments.log != "-") add(folderOf(arguments.log));
  return folders;
}

// Runs this program again inside a sandbox, where the default path of the daemon is free. Paths and
// process numbers are different there, so the scenario is passed as an open file, and signals
// through a pipe.
int runInSandbox(const Arguments& arguments, const std::string& sandbox) {
  RunProcess::prepare();
  const std::string program = programPath();
  const std::string path = Scenario::pathOf(arguments.file);
  const int file = ::open(path.c_str(), O_RDONLY);
  int pipe[2] = {-1, -1};
  if (file < 0 || ::pipe2(pipe, O_CLOEXEC) != 0) {
    std::fprintf(stderr, "orbd-sim run: %s: %s\n", path.c_str(), std::strerror(errno));
    return orbtool::kExitFailed;
  }
  ::fcntl(pipe[0], F_SETFD, 0);
  std::vector<std::string> command = {sandbox, program, "run", "--no-sandbox",
                                      "--signals-from=" + std::to_string(pipe[0])};
  if (!arguments.control.empty()) command.push_back("--control=" + arguments.control);
  if (!arguments.log.empty()) command.push_back("--log=" + arguments.log);
  if (arguments.trace) command.push_back("--trace");
  if (arguments.json) command.push_back("--json");
  command.push_back(kOpenFiles + std::to_string(file));
  command.push_back("--");
  command.insert(command.end(), arguments.command.begin(), arguments.command.end());

  RunProcess process;
  const auto environment = environmentWith(kBindVariable, foldersToKeep(arguments, program));
  const int status = process.start(command, environment, /*sheltered=*/true);
  if (status != 0) return cannotStart(sandbox, status);
  ::close(pipe[0]);
  return process.wait([&pipe](int signal) {
    const auto number = static_cast<unsigned char>(signal);
    (void)!::write(pipe[1], &number, 1);
  });
}

// Closes the file that the parent outside the sandbox opened, so that the command does not inherit
// it.
void closeOpened(const std::string& path) {
  const size_t length = std::strlen(kOpenFiles);
  if (path.compare(0, length, kOpenFiles) == 0) ::close(std::atoi(path.c_str() + length));
}

int run(const Arguments& arguments) {
  std::string error;
  const auto scenario = Scenario::fromFile(arguments.file, error);
  if (!scenario) {
    std::istringstream lines(error);
    for (std::string line; std::getline(lines, line);)
      std::fprintf(stderr, "orbd-sim run: %s\n", line.c_str());
    return orbtool::kExitUsage;
  }
  if (arguments.signals >= 0) closeOpened(arguments.file);
  const bool reached = redirected() || ownsDefaultPlace();
  const bool wanted = arguments.sandbox || (!arguments.noSandbox && !reached);
  const std::string sandbox = wanted ? findSandbox() : std::string();
  if (!sandbox.empty()) return runInSandbox(arguments, sandbox);
  if (arguments.sandbox) {
    std::fprintf(stderr, "orbd-sim run: no %s in the directory of %s\n", kSandboxBeside,
                 programPath().c_str());
    return orbtool::kExitFailed;
  }
  return runHere(arguments, *scenario);
}

}  // namespace

Command addRun(orbtool::CommandLine& line) {
  const auto arguments = std::make_shared<Arguments>();
  CLI::App* const app = line.app().add_subcommand(
      "run",
      "Play a scenario for a command: start a daemon on a separate socket, then the command. "
      "The command and its arguments are after --.");
  app->add_option("FILE", arguments->file, "The scenario" + orReadyScenario())
      ->required()
      ->type_name("");
  line.keepRest(*app, arguments->command);
  app->add_option("-c,--control", arguments->control,
                  "Accept orders of 'orbd-sim ctl' on PATH, from the same user only.")
      ->type_name("PATH")
      ->take_last()
      ->check(placeToListen());
  app->add_option("-l,--log", arguments->log,
                  "Write the daemon's log to FILE; - for standard error.")
      ->type_name("FILE")
      ->take_last();
  addTraceOptions(*app, arguments->trace, arguments->json);
  app->get_option("--trace")->needs("--log")->description(
      "Also write each handshake record and each frame to the log in decoded form");
  app->get_option("--json")->description("Write trace and log as JSON, one object per line");
  CLI::Option* const sandbox = app->add_flag(
      "--sandbox", arguments->sandbox,
      "Run both in a sandbox with its own /dev/socket. This is the default, except if /dev/socket "
      "is writable or can be created, or inside 'orb-sandbox -r'.");
  app->add_flag("--no-sandbox", arguments->noSandbox,
                "Do not use the sandbox. If /dev/socket is not writable and cannot be created, and "
                "inside 'orb-sandbox -r', the socket is in a temporary directory, and ORB_SOCKET "
                "has its path. Applications use this path only inside 'orb-sandbox -r'.")
      ->excludes(sandbox);
  app->add_option("--signals-from", arguments->signals, "")->group("");
  app->footer(
      "SIGINT, SIGTERM and SIGHUP are passed to the command; a second signal kills it.\n"
      "Exit status: the status of the command; 128 plus the number of the signal that killed it;\n"
      "126 or 127 if it cannot be started; 3 the client did not meet the expectations of the\n"
      "scenario; 1 the daemon cannot be started or the log cannot be written; 2 wrong arguments "
      "or\n"
      "a wrong scenario.\n"
      "Example: orbd-sim run handoff -- ./app --verbose");
  return {app, [arguments, &line] {
            if (arguments->command.empty()) return line.refuse("no command after --");
            return run(*arguments);
          }};
}

}  // namespace orbsim
