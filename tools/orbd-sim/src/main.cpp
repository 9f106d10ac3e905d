// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

// orbd-sim: the daemon stand-in as a program. The library and the files of the commands do the
// work; this file combines them.

#include <algorithm>
#include <vector>

#include "Commands.h"
#include "orbtool/Run.h"

namespace {

int run(int argc, char** argv) {
  orbtool::CommandLine line("orbd-sim",
                            "Play the system daemon: serve link capacity (LCE), link latency (LLE) "
                            "and link interruption (LLI) on its socket and log what clients do.");
  const orbsim::Command serve = orbsim::addServe(line);
  const std::vector<orbsim::Command> commands = {orbsim::addRelay(line), orbsim::addRun(line),
                                                 orbsim::addCheck(line), orbsim::addCtl(line)};
  if (const auto status = line.parse(argc, argv)) return *status;
  for (const orbsim::Command& command : commands) {
    if (!command.app->parsed()) continue;
    const auto options = serve.app->get_options();
    const auto given = std::find_if(options.begin(), options.end(),
                                    [](const CLI::Option* option) { return option->count() > 0; });
    if (given != options.end())
      return line.refuse("an option before the command: " + (*given)->get_name());
    return command.run();
  }
  return serve.run();
}

}  // namespace

int main(int argc, char** argv) {
  return orbtool::runTool("orbd-sim", [&] { return run(argc, argv); });
}
