// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <CLI/CLI.hpp>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace orbtool {

// A tool's command line: its options and commands are those that are added to app(). It reads them
// as GNU programs do, abbreviations of long options included, and adds --help, --version and
// --completion. Wrong use is one line on standard error and status 2. Used by the main thread.
class CommandLine {
 public:
  CommandLine(const std::string& name, const std::string& description);

  CLI::App& app() { return mApp; }
  // What follows "--" behind this command goes into words as it stands, and is no argument: for a
  // command that starts programs. The words outlive parse().
  void keepRest(const CLI::App& command, std::vector<std::string>& words);
  // The status when the program is to end now.
  std::optional<int> parse(int argc, const char* const* argv);
  // For wrong use that only the tool can see: says why, gives the status.
  int refuse(const std::string& reason) const;
  // The program and the command that was given, for messages: "orbctl watch".
  std::string name() const;

 private:
  void takeRest(std::vector<std::string>& words) const;

  CLI::App mApp;
  std::string mShell;
  std::map<const CLI::App*, std::vector<std::string>*> mRests;
};

// The words with each abbreviated long option written out, where it is the beginning of one only.
// Also for the command that the words name.
std::vector<std::string> withWholeOptions(const CLI::App& app, std::vector<std::string> words);

// The options that can stand behind a command: its own, and where the tool's may stand there,
// those.
std::vector<const CLI::Option*> optionsOf(const CLI::App& app);

// A script that completes the tool's words: for "bash" or "zsh".
std::string completion(const CLI::App& app, const std::string& shell);

}  // namespace orbtool
