// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

#pragma once

#include <functional>
#include <string>

#include "orbtool/CommandLine.h"

namespace orbsim {

// A command of the program. Each add...() below adds one to the command line and returns the
// function that runs it after its options are read. Each is in its own file. The command line must
// live longer.
struct Command {
  CLI::App* app = nullptr;
  std::function<int()> run;
};

// The program without a command: acts as the daemon.
Command addServe(orbtool::CommandLine& line);
Command addRelay(orbtool::CommandLine& line);

// Plays a scenario for a command.
Command addRun(orbtool::CommandLine& line);
// Checks scenarios without playing them.
Command addCheck(orbtool::CommandLine& line);
// Gives orders to a running daemon stand-in.
Command addCtl(orbtool::CommandLine& line);

// The end of the help text for a scenario FILE: the names of ready scenarios.
std::string orReadyScenario();
// Checks a path for --socket of all commands.
CLI::Validator placeToListen();
// Adds --trace, and --json, which needs it.
void addTraceOptions(CLI::App& app, bool& trace, bool& json);

}  // namespace orbsim
