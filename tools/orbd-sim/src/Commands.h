// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

#pragma once

#include <functional>
#include <string>

#include "orbtool/CommandLine.h"

namespace orbsim {

// A command of the program: each add...() below adds one to the command line, in a file of its own,
// and gives what runs it once its options are read. The command line outlives it.
struct Command {
  CLI::App* app = nullptr;
  std::function<int()> run;
};

// What the program does without a command: play the daemon.
Command addServe(orbtool::CommandLine& line);
Command addRelay(orbtool::CommandLine& line);

// Play a scenario to a command.
Command addRun(orbtool::CommandLine& line);
// Look at scenarios without playing them.
Command addCheck(orbtool::CommandLine& line);
// Give orders to a daemon that runs.
Command addCtl(orbtool::CommandLine& line);

// For FILE of a scenario, behind its first words: what else it may be, by name.
std::string orReadyScenario();
// For --socket of all commands: where one can listen.
CLI::Validator placeToListen();
// --trace, and --json that needs it.
void addTraceOptions(CLI::App& app, bool& trace, bool& json);

}  // namespace orbsim
