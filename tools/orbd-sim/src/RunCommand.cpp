// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

// orbd-sim run: plays a scenario to a command, on a socket of its own.

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
#include <string>
#include <thread>
#include <vector>

#include "Commands.h"
#include "RunProcess.h"
#include "orbsim/Scenario.h"
#include "orbtool/Run.h"

extern char** environ;

namespace orbsim {
namespace {

// Where the command is told of the socket: the platform's stand-ins take its place from there.
constexpr char kSocketVariable[] = "ORB_SOCKET";
// More folders for the sandbox to keep.
constexpr char kBindVariable[] = "ORB_SANDBOX_BIND";
constexpr char kSandboxBeside[] = "orb-sandbox";
constexpr char kSandboxInSources[] = "scripts/sandbox";
constexpr int kExitUnexpected = 3;

struct Arguments {
  std::string file;
  std::vector<std::string> command;
  std::string control;
  std::string log;
  bool sandbox = false;
  bool noSandbox = false;
  int signals = -1;  // descriptor on which the parent outside of the sandbox passes signals on
};

// A folder for the socket alone, gone with the object.
class PrivateFolder {
 public:
  PrivateFolder() {
    const char* const temporary = std::getenv("TMPDIR");
    mPath = std::string(temporary != nullptr && *temporary == '/' ? temporary : "/tmp") +
            "/orbd-sim-XXXXXX";
    if (::mkdtemp(mPath.data()) == nullptr) mPath.clear();
  }
  ~PrivateFolder() {
    if (!mPath.empty()) ::rmdir(mPath.c_str());
  }
  PrivateFolder(const PrivateFolder&) = delete;
  PrivateFolder& operator=(const PrivateFolder&) = delete;

  const std::string& path() const { return mPath; }

 private:
  std::string mPath;
};

std::string ownPath() {
  char path[PATH_MAX];
  const ssize_t length = ::readlink("/proc/self/exe", path, sizeof path);
  return length > 0 ? std::string(path, static_cast<size_t>(length)) : std::string();
}

std::string folderOf(const std::string& path) {
  const size_t slash = path.rfind('/');
  return slash == std::string::npos ? "." : path.substr(0, slash == 0 ? 1 : slash);
}

// Beside the program, or in the sources that the build tree lies in; empty when there is none.
std::string findSandbox() {
  std::string folder = folderOf(ownPath());
  const std::string beside = folder + "/" + kSandboxBeside;
  if (::access(beside.c_str(), X_OK) == 0) return beside;
  while (folder.size() > 1) {
    const std::string inSources = folder + "/" + kSandboxInSources;
    if (::access(inSources.c_str(), X_OK) == 0) return inSources;
    folder = folderOf(folder);
  }
  return {};
}

// The daemon's own place, where applications look that nobody tells of another.
bool ownsDefaultPlace() {
  return ::access(kSocketDirectory, W_OK) == 0 && SocketPlace::whyWrong(kSocketPath).empty();
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

// Signals that the parent outside of the sandbox passes on come here as if they were sent.
void listenForSignals(int fd) {
  std::thread([fd] {
    unsigned char signal = 0;
    while (::read(fd, &signal, 1) == 1) ::kill(::getpid(), signal);
  }).detach();
}

bool openLog(const std::string& name, Options& options) {
  if (name.empty()) return true;
  std::FILE* const file = name == "-" ? stderr : std::fopen(name.c_str(), "we");
  if (file == nullptr) return false;
  options.log = [file](const std::string& line) {
    const std::string text = logText(std::chrono::system_clock::now(), line) + "\n";
    std::fwrite(text.data(), 1, text.size(), file);
    std::fflush(file);
  };
  return true;
}

// The daemon here, the command beside it.
int runHere(const Arguments& arguments, const Scenario& scenario) {
  RunProcess::prepare();
  if (arguments.signals >= 0) {
    ::fcntl(arguments.signals, F_SETFD, FD_CLOEXEC);
    listenForSignals(arguments.signals);
  }
  const PrivateFolder folder;
  Options options;
  options.record = false;
  options.socketPath = ownsDefaultPlace() ? kSocketPath : folder.path() + "/orb";
  if (!openLog(arguments.log, options)) {
    std::fprintf(stderr, "orbd-sim run: %s: %s\n", arguments.log.c_str(), std::strerror(errno));
    return orbtool::kExitFailed;
  }
  ScenarioRun run(scenario, options);
  run.onEnd(RunProcess::askToEnd);
  std::string error;
  if (!run.start()) error = run.error();
  if (error.empty() && !arguments.control.empty()) error = run.control(arguments.control);
  if (!error.empty()) {
    std::fprintf(stderr, "orbd-sim run: %s\n", error.c_str());
    return orbtool::kExitFailed;
  }

  RunProcess process;
  const auto environment = environmentWith(kSocketVariable, options.socketPath);
  int status = process.start(arguments.command, environment, /*sheltered=*/false);
  if (status != 0) return cannotStart(arguments.command.front(), status);
  status = process.wait([&process](int signal) { process.kill(signal); });
  run.stop();
  if (process.cutShort()) return status;
  const auto failures = run.failures();
  for (const std::string& failure : failures) {
    std::fprintf(stderr, "orbd-sim run: %s\n", failure.c_str());
  }
  return failures.empty() ? status : kExitUnexpected;
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

// This program once more, inside a sandbox, where the daemon's own place is nobody else's. The
// scenario goes there as an open file and signals through a pipe, as paths and process numbers are
// others there.
int runInSandbox(const Arguments& arguments, const std::string& sandbox) {
  RunProcess::prepare();
  const std::string program = ownPath();
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
  command.push_back("/proc/self/fd/" + std::to_string(file));
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

int run(const Arguments& arguments) {
  std::string error;
  const auto scenario = Scenario::fromFile(arguments.file, error);
  if (!scenario) {
    std::fprintf(stderr, "orbd-sim run: %s\n", error.c_str());
    return orbtool::kExitUsage;
  }
  const bool wanted = arguments.sandbox || (!arguments.noSandbox && !ownsDefaultPlace());
  const std::string sandbox = wanted ? findSandbox() : std::string();
  if (!sandbox.empty()) return runInSandbox(arguments, sandbox);
  if (arguments.sandbox) {
    std::fprintf(stderr, "orbd-sim run: there is no %s beside %s\n", kSandboxBeside,
                 ownPath().c_str());
    return orbtool::kExitFailed;
  }
  return runHere(arguments, *scenario);
}

}  // namespace

Command addRun(orbtool::CommandLine& line) {
  const auto arguments = std::make_shared<Arguments>();
  CLI::App* const app = line.app().add_subcommand(
      "run",
      "Play a scenario to a command: a daemon on a socket of its own, and the command, with its "
      "arguments behind --, once that listens.");
  app->add_option("FILE", arguments->file,
                  "The scenario, or the name of a ready one: handoff, rate-drop, refused, "
                  "slow-answers, steady, vanish.")
      ->required()
      ->type_name("");
  line.keepRest(*app, arguments->command);
  app->add_option("-c,--control", arguments->control,
                  "Take orders of 'orbd-sim ctl' on PATH, from the same user.")
      ->type_name("PATH")
      ->take_last()
      ->check(placeToListen());
  app->add_option("-l,--log", arguments->log,
                  "Write the daemon's log to FILE; - for standard error.")
      ->type_name("FILE")
      ->take_last();
  CLI::Option* const sandbox = app->add_flag(
      "--sandbox", arguments->sandbox,
      "Run both in a sandbox, with a /dev/socket of its own. This is what happens unless there is "
      "a /dev/socket that can be written.");
  app->add_flag("--no-sandbox", arguments->noSandbox,
                "Do without. Where /dev/socket cannot be written the socket is in a folder of its "
                "own, and ORB_SOCKET tells the command.")
      ->excludes(sandbox);
  app->add_option("--signals-from", arguments->signals, "")->group("");
  app->footer(
      "SIGINT, SIGTERM and SIGHUP are passed on to the command; a second one kills it.\n"
      "Exit status: the command's, 128 and the number of the signal that killed it, 126 or 127\n"
      "when it cannot be started; 3 the client did not do what the scenario expects; 1 the daemon\n"
      "cannot be played, 2 wrong arguments or a wrong scenario.\n"
      "Example: orbd-sim run handoff -- ./app --verbose");
  return {app, [arguments, &line] {
            if (arguments->command.empty()) return line.refuse("no command to run behind --");
            return run(*arguments);
          }};
}

}  // namespace orbsim
