// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "HelpText.h"

#include <algorithm>
#include <sstream>

#include "orbtool/CommandLine.h"

namespace orbtool {
namespace {

constexpr size_t kColumn = 26;
constexpr size_t kWidth = 80;

// Wraps the text between words. All lines except the first are indented.
std::string broken(const std::string& text, size_t indentation) {
  std::istringstream words(text);
  std::string lines, word;
  size_t column = indentation;
  while (words >> word) {
    const bool first = column == indentation;
    if (!first && column + 1 + word.size() > kWidth) {
      lines += "\n" + std::string(indentation, ' ');
      column = indentation;
    } else if (!first) {
      lines += ' ';
      ++column;
    }
    lines += word;
    column += word.size();
  }
  return lines + "\n";
}

std::string entry(const std::string& name, const std::string& text) {
  std::string head = "  " + name;
  if (text.empty()) return head + "\n";
  head += head.size() + 2 <= kColumn ? std::string(kColumn - head.size(), ' ')
                                     : "\n" + std::string(kColumn, ' ');
  return head + broken(text, kColumn);
}

std::string namesOf(const CLI::Option& option) {
  std::string names;
  for (const std::string& name : option.get_snames()) names += (names.empty() ? "-" : ", -") + name;
  for (const std::string& name : option.get_lnames())
    names += (names.empty() ? "--" : ", --") + name;
  if (option.get_type_size() == 0) return names;  // a flag
  // Text after the colon is not shown; the description has it.
  const std::string type = option.get_type_name();
  return names + " " + type.substr(0, type.find(':'));
}

}  // namespace

// Adds the options of the tool that are also allowed after the command.
std::string HelpText::make_inherited(const CLI::App& app) const {
  std::string text;
  const std::vector<const CLI::Option*> own = app.get_options();
  for (const CLI::Option* option : optionsOf(app)) {
    if (std::find(own.begin(), own.end(), option) == own.end()) text += make_option(option, false);
  }
  return text.empty() ? text : "\nOptions of all commands:\n" + text;
}

std::string HelpText::make_help(const CLI::App* app, std::string name, CLI::AppFormatMode) const {
  std::string text = make_usage(app, std::move(name));
  text += broken(app->get_description(), 0);
  text += make_positionals(app) + make_groups(app, CLI::AppFormatMode::Normal);
  text += make_inherited(*app);
  const auto commands = app->get_subcommands({});
  if (!commands.empty()) text += "Commands:\n";
  for (const CLI::App* command : commands) text += make_subcommand(command);
  return app->get_footer().empty() ? text : text + "\n" + app->get_footer() + "\n";
}

std::string HelpText::make_option(const CLI::Option* option, bool isPositional) const {
  std::string text = option->get_description();
  if (!option->get_default_str().empty()) text += " [Default: " + option->get_default_str() + "]";
  if (!option->get_envname().empty()) text += " [Default: $" + option->get_envname() + "]";
  return entry(isPositional ? option->get_name(true) : namesOf(*option), text);
}

std::string HelpText::make_subcommand(const CLI::App* command) const {
  return entry(command->get_name(), command->get_description());
}

}  // namespace orbtool
