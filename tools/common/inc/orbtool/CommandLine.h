// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <CLI/CLI.hpp>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace orbtool {

// The command line of a tool. The tool adds its options and commands to app(). This class parses
// them like GNU programs, with abbreviated long options, and adds --help, --version and
// --completion. Wrong use gives one line on standard error and status 2. Used by the main thread.
class CommandLine {
 public:
  CommandLine(const std::string& name, const std::string& description);

  CLI::App& app() { return mApp; }
  // Stores the words after "--" of this command in words without parsing them, for a command that
  // starts programs. The words must outlive parse().
  void keepRest(const CLI::App& command, std::vector<std::string>& words);
  // Returns an exit status if the program must end now.
  std::optional<int> parse(int argc, const char* const* argv);
  // For wrong use that only the tool can detect: prints the reason and returns the exit status.
  int refuse(const std::string& reason) const;
  // The names of the program and of the given command, for messages: "orbctl watch".
  std::string name() const;

 private:
  void takeRest(std::vector<std::string>& words) const;

  CLI::App mApp;
  std::string mShell;
  std::map<const CLI::App*, std::vector<std::string>*> mRests;
};

// Replaces each abbreviated long option by its full name if the abbreviation is unique. Also for
// the options of the command in the words.
std::vector<std::string> withWholeOptions(const CLI::App& app, std::vector<std::string> words);

// The options that are allowed after a command: its own options and, if the tool allows them there,
// the options of the tool.
std::vector<const CLI::Option*> optionsOf(const CLI::App& app);

// A completion script for the shell "bash" or "zsh".
std::string completion(const CLI::App& app, const std::string& shell);

}  // namespace orbtool
