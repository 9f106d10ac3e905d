// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include <algorithm>

#include "orbtool/CommandLine.h"

namespace orbtool {
namespace {

std::vector<const CLI::App*> commandsOf(const CLI::App& app) {
  return app.get_subcommands([](const CLI::App*) { return true; });
}

std::vector<std::string> namesOf(const CLI::Option& option) {
  std::vector<std::string> names;
  for (const std::string& name : option.get_lnames()) names.push_back("--" + name);
  for (const std::string& name : option.get_snames()) names.push_back("-" + name);
  return names;
}

void add(std::string& words, const std::string& more, const char* between = " ") {
  if (!words.empty() && !more.empty()) words += between;
  words += more;
}

// The possible values, if the check of the option lists them: "{auto,always,never}".
std::string valuesOf(const CLI::Option& option) {
  const std::string type = option.get_type_name();
  const size_t begin = type.find('{'), end = type.rfind('}');
  if (begin == std::string::npos || end == std::string::npos) return {};
  std::string values = type.substr(begin + 1, end - begin - 1);
  std::replace(values.begin(), values.end(), ',', ' ');
  return values;
}

// Parts of the shell script: patterns and cases of its "case" statements, each for the words of
// typed commands.
struct Tables {
  std::string commands, takers;        // patterns; takers: options with a value
  std::string values, options, words;  // cases
};

void addCase(std::string& cases, const std::string& pattern, const std::string& choices) {
  if (!choices.empty()) cases += "      " + pattern + ") choices=\"" + choices + "\" ;;\n";
}

void fill(const CLI::App& app, const std::string& path, Tables& tables) {
  std::string options, words;
  for (const CLI::App* command : commandsOf(app)) {
    const std::string longer = path + " " + command->get_name();
    add(words, command->get_name());
    add(tables.commands, "\"" + longer + "\"", " | ");
    fill(*command, longer, tables);
  }
  for (const CLI::Option* option : optionsOf(app)) {
    std::string patterns;
    for (const std::string& name : namesOf(*option)) {
      add(options, name);
      add(patterns, "\"" + path + " " + name + "\"", " | ");
    }
    if (patterns.empty()) {
      add(words, valuesOf(*option));
    } else if (option->get_type_size() != 0) {
      add(tables.takers, patterns, " | ");
      addCase(tables.values, patterns, valuesOf(*option));
    }
  }
  addCase(tables.options, "\"" + path + "\"", options);
  addCase(tables.words, "\"" + path + "\"", words);
}

std::string switchOn(const char* word, const std::string& cases) {
  if (cases.empty()) return "    :\n";
  return "    case \"" + std::string(word) + "\" in\n" + cases + "    esac\n";
}

// The part that is the same for both shells. Bash splits "--option=value" into three words, zsh
// does not.
std::string bodyOf(const Tables& tables) {
  std::string steps;
  if (!tables.takers.empty()) steps += "      " + tables.takers + ") taking=\"$given $typed\" ;;\n";
  if (!tables.commands.empty())
    steps += "      " + tables.commands + ") given=\"$given $typed\" ;;\n";
  return "    [[ $typed == \"=\" ]] && continue\n"
         "    if [[ -n $taking ]]; then\n      taking=\n      continue\n    fi\n"
         "    if [[ $typed == -- ]]; then\n      ended=1\n      break\n    fi\n" +
         switchOn("$given $typed", steps) +
         "  done\n"
         "  if [[ -z $taking && -z $ended && $current == --*=* ]]; then\n"
         "    taking=\"$given ${current%%=*}\"\n  fi\n"
         "  if [[ -n $taking ]]; then\n" +
         switchOn("$taking", tables.values) +
         "  elif [[ -n $ended ]]; then\n    :\n"
         "  elif [[ $current == -* ]]; then\n" +
         switchOn("$given", tables.options) + "  else\n" + switchOn("$given", tables.words) +
         "  fi\n";
}

}  // namespace

std::vector<const CLI::Option*> optionsOf(const CLI::App& app) {
  std::vector<const CLI::Option*> options;
  for (const CLI::Option* option : app.get_options()) {
    if (!option->get_group().empty()) options.push_back(option);
  }
  if (!app.get_fallthrough() || app.get_parent() == nullptr) return options;
  for (const CLI::Option* option : optionsOf(*app.get_parent())) {
    const bool known = std::any_of(options.begin(), options.end(), [&](const CLI::Option* own) {
      return own->get_name() == option->get_name();
    });
    if (!known) options.push_back(option);
  }
  return options;
}

// Variables must not have the names "path" and "words", which are special in zsh.
std::string completion(const CLI::App& app, const std::string& shell) {
  const std::string& name = app.get_name();
  const bool bash = shell == "bash";
  std::string function = "_" + name;
  std::replace(function.begin(), function.end(), '-', '_');
  Tables tables;
  fill(app, name, tables);
  std::string text = bash ? "" : "#compdef " + name + "\n";
  text += function + "() {\n  local given=" + name + " typed taking= ended= choices=\n" +
          "  local current=\"" + (bash ? "${COMP_WORDS[COMP_CWORD]}" : "${words[CURRENT]}") +
          "\"\n  for typed in \"" +
          (bash ? "${COMP_WORDS[@]:1:COMP_CWORD-1}" : "${(@)words[2,CURRENT-1]}") + "\"; do\n" +
          bodyOf(tables);
  // If there are no choices, the shell offers files.
  if (bash) {
    return text +
           "  mapfile -t COMPREPLY < <(compgen -W \"$choices\" -- \"${current#=}\")\n"
           "}\ncomplete -o default -F " +
           function + " " + name + "\n";
  }
  // zsh either loads this from a file with the name of the function at the first use, or reads it
  // as a whole.
  return text +
         "  [[ $current != --*=* ]] || compset -P '*='\n"
         "  if [[ -n $choices ]]; then\n    compadd -- ${=choices}\n  else\n    _files\n  fi\n}\n"
         "if [[ $funcstack[1] == " +
         function + " ]]; then\n  " + function + " \"$@\"\nelse\n  compdef " + function + " " +
         name + "\nfi\n";
}

}  // namespace orbtool
