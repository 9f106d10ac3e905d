// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <CLI/CLI.hpp>
#include <string>

namespace orbtool {

// Prints --help in the format of GNU programs: first the usage, then a description, then options
// and commands in columns, wrapped at 80 characters. Default values and environment variables
// follow the description of an option.
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
