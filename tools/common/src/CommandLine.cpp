// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "orbtool/CommandLine.h"

#include <algorithm>
#include <cstdio>
#include <memory>

#include "HelpText.h"
#include "orbtool/Run.h"

namespace orbtool {
namespace {

const char kCompletion[] = "--completion";

const CLI::App* commandOf(const CLI::App& app, const std::string& word) {
  const auto commands = app.get_subcommands([](const CLI::App*) { return true; });
  const auto found = std::find_if(commands.begin(), commands.end(), [&](const CLI::App* command) {
    return command->check_name(word);
  });
  return found == commands.end() ? nullptr : *found;
}

// The command that the words before "--" name, or the tool itself.
const CLI::App& commandNamed(const CLI::App& app, const std::vector<std::string>& words) {
  const CLI::App* command = &app;
  for (const std::string& word : words) {
    if (word == "--") break;
    if (const CLI::App* const next = commandOf(*command, word)) command = next;
  }
  return *command;
}

// The full name of an option. Returns the given name if it is not an abbreviation or if it is
// ambiguous.
std::string whole(const CLI::App& app, const std::string& name) {
  std::vector<std::string> longer;
  for (const CLI::Option* option : app.get_options()) {
    for (const std::string& candidate : option->get_lnames()) {
      if (candidate == name) return name;
      if (candidate.compare(0, name.size(), name) == 0) longer.push_back(candidate);
    }
  }
  return longer.size() == 1 ? longer.front() : name;
}

// The reason of a parse error on one line, with own texts for the most frequent errors.
std::string reasonOf(const CLI::ParseError& error) {
  std::string text = error.what();
  if (text.compare(0, 2, ": ") == 0) text = kCompletion + text;  // a hidden option has no name here
  std::replace(text.begin(), text.end(), '\n', ' ');
  text.erase(text.find_last_not_of(' ') + 1);
  if (error.get_exit_code() == static_cast<int>(CLI::ExitCodes::RequiredError) &&
      text.find("ubcommand") != std::string::npos)
    return "no command given";
  return text;
}

// The reason for words that no option or command accepts.
std::string reasonFor(const std::vector<std::string>& extra) {
  const std::string words = CLI::detail::join(extra, " ");
  return (words.compare(0, 1, "-") == 0 ? "unknown option: " : "unexpected argument: ") + words;
}

}  // namespace

std::vector<std::string> withWholeOptions(const CLI::App& app, std::vector<std::string> words) {
  const CLI::App* command = &app;
  for (std::string& word : words) {
    if (word == "--") break;
    if (word.compare(0, 2, "--") == 0) {
      const size_t end = std::min(word.find('='), word.size());
      word = "--" + whole(*command, word.substr(2, end - 2)) + word.substr(end);
    } else if (const CLI::App* const next = commandOf(*command, word)) {
      command = next;
    }
  }
  return words;
}

CommandLine::CommandLine(const std::string& name, const std::string& description)
    : mApp(description, name) {
  // If an option is given several times, the last one counts, except if it collects values.
  mApp.option_defaults()->multi_option_policy(CLI::MultiOptionPolicy::TakeLast);
  mApp.set_help_flag("-h,--help",
                     "Print this help and exit; after a command: the help of that command");
  mApp.set_version_flag("-V,--version", name + " " ORB_TOOL_VERSION, "Print the version and exit");
  // For package builders, so it is not in the help.
  mApp.add_option(kCompletion, mShell)->check(CLI::IsMember({"bash", "zsh"}))->group("");
  const auto help = std::make_shared<HelpText>();
  help->label("Positionals", "Arguments");
  help->label("SUBCOMMAND", "COMMAND");
  mApp.formatter(help);
}

void CommandLine::keepRest(const CLI::App& command, std::vector<std::string>& words) {
  mRests[&command] = &words;
}

// These words must not reach the parser: it would read words in brackets as lists.
void CommandLine::takeRest(std::vector<std::string>& words) const {
  const auto rest = mRests.find(&commandNamed(mApp, words));
  const auto dashes = std::find(words.begin(), words.end(), "--");
  if (rest == mRests.end() || dashes == words.end()) return;
  rest->second->assign(dashes + 1, words.end());
  words.erase(dashes, words.end());
}

std::optional<int> CommandLine::parse(int argc, const char* const* argv) {
  std::vector<std::string> words(argv + std::min(argc, 1), argv + argc);
  takeRest(words);
  words = withWholeOptions(mApp, std::move(words));
  std::reverse(words.begin(), words.end());  // the parser expects them in reverse order
  // --help, --version and --completion do not need the command that the tool requires.
  try {
    mApp.parse(words);
  } catch (const CLI::Success& wanted) {
    return mApp.exit(wanted);
  } catch (const CLI::RequiredError& error) {
    const std::vector<std::string> unknown = mApp.remaining(true);
    if (!unknown.empty()) return refuse("no such command or option: " + unknown.front());
    if (mShell.empty()) return refuse(reasonOf(error));
  } catch (const CLI::ExtrasError&) {
    return refuse(reasonFor(mApp.remaining(true)));
  } catch (const CLI::ParseError& error) {
    return refuse(reasonOf(error));
  }
  if (mShell.empty()) return std::nullopt;
  std::fputs(completion(mApp, mShell).c_str(), stdout);
  return kExitDone;
}

int CommandLine::refuse(const std::string& reason) const {
  std::fprintf(stderr, "%s: %s; try '%s --help'\n", name().c_str(), reason.c_str(), name().c_str());
  return kExitUsage;
}

std::string CommandLine::name() const {
  std::string all = mApp.get_name();
  for (const CLI::App* app = &mApp; !app->get_subcommands().empty();) {
    app = app->get_subcommands().front();
    all += " " + app->get_name();
  }
  return all;
}

}  // namespace orbtool
