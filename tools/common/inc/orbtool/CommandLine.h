// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <CLI/CLI.hpp>
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
  // The status when the program is to end now.
  std::optional<int> parse(int argc, const char* const* argv);
  // For wrong use that only the tool can see: says why, gives the status.
  int refuse(const std::string& reason) const;
  // The program and the command that was given, for messages: "orbctl watch".
  std::string name() const;

 private:
  CLI::App mApp;
  std::string mShell;
};

// The words with each abbreviated long option written out, where it is the beginning of one only.
// Also for the command that the words name.
std::vector<std::string> withWholeOptions(const CLI::App& app, std::vector<std::string> words);

// A script that completes the tool's words: for "bash" or "zsh".
std::string completion(const CLI::App& app, const std::string& shell);

}  // namespace orbtool
