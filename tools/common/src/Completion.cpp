// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include <algorithm>

#include "orbtool/CommandLine.h"

namespace orbtool {
namespace {

// The words that can stand after a command: its commands, its options.
std::string wordsOf(const CLI::App& app) {
  std::string words;
  for (const CLI::App* command : app.get_subcommands([](const CLI::App*) { return true; }))
    words += command->get_name() + " ";
  for (const CLI::Option* option : app.get_options()) {
    if (option->get_group().empty()) continue;
    for (const std::string& name : option->get_lnames()) words += "--" + name + " ";
    for (const std::string& name : option->get_snames()) words += "-" + name + " ";
  }
  if (!words.empty()) words.pop_back();
  return words;
}

// One case per command: what was typed before the word under the cursor chooses it.
void addCases(const CLI::App& app, const std::string& path, std::string& cases) {
  cases += "    \"" + path + "\") choices=\"" + wordsOf(app) + "\" ;;\n";
  for (const CLI::App* command : app.get_subcommands([](const CLI::App*) { return true; }))
    addCases(*command, path + " " + command->get_name(), cases);
}

void addCommands(const CLI::App& app, const std::string& path, std::string& patterns) {
  for (const CLI::App* command : app.get_subcommands([](const CLI::App*) { return true; })) {
    const std::string longer = path + " " + command->get_name();
    patterns += (patterns.empty() ? "\"" : " | \"") + longer + "\"";
    addCommands(*command, longer, patterns);
  }
}

}  // namespace

// A name of its own for each variable: zsh has a meaning for "path" and "words".
std::string completion(const CLI::App& app, const std::string& shell) {
  const std::string& name = app.get_name();
  const bool bash = shell == "bash";
  std::string function = "_" + name;
  std::replace(function.begin(), function.end(), '-', '_');
  std::string cases, commands;
  addCases(app, name, cases);
  addCommands(app, name, commands);
  std::string step = "    :\n";
  if (!commands.empty()) {
    step = "    case \"$given $typed\" in\n      " + commands +
           ") given=\"$given $typed\" ;;\n    esac\n";
  }
  std::string text = bash ? "" : "#compdef " + name + "\n";
  text += function + "() {\n  local given=" + name + " typed choices=\n  for typed in \"" +
          (bash ? "${COMP_WORDS[@]:1:COMP_CWORD-1}" : "${(@)words[2,CURRENT-1]}") + "\"; do\n" +
          step + "  done\n  case \"$given\" in\n" + cases + "  esac\n";
  if (bash) {
    return text +
           "  mapfile -t COMPREPLY < <(compgen -W \"$choices\" -- \"${COMP_WORDS[COMP_CWORD]}\")\n"
           "}\ncomplete -o default -F " +
           function + " " + name + "\n";
  }
  // Loaded at the first use from a file of the function's name, or read as a whole.
  return text + "  compadd -- ${=choices}\n  _files\n}\nif [[ $funcstack[1] == " + function +
         " ]]; then\n  " + function + " \"$@\"\nelse\n  compdef " + function + " " + name +
         "\nfi\n";
}

}  // namespace orbtool
