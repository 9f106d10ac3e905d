// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <CLI/CLI.hpp>
#include <string>

namespace orbtool {

// A tool's --help as GNU programs print it: how to call it first, then what it does, options and
// commands in a column, texts broken before the 80th one. Defaults and environment variables stand
// behind an option's description.
class HelpText : public CLI::Formatter {
 public:
  std::string make_help(const CLI::App* app, std::string name,
                        CLI::AppFormatMode mode) const override;
  std::string make_option(const CLI::Option* option, bool isPositional) const override;
  std::string make_subcommand(const CLI::App* command) const override;

 private:
  std::string make_inherited(const CLI::App& app) const;
};

}  // namespace orbtool
