// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

// orbd-sim check: checks scenarios without playing them.

#include <cstdio>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "Commands.h"
#include "orbsim/Scenario.h"
#include "orbtool/Run.h"

namespace orbsim {
namespace {

struct Arguments {
  std::vector<std::string> files;
  bool schema = false;
};

int check(const Arguments& arguments) {
  if (arguments.schema) std::fputs(Scenario::schema().c_str(), stdout);
  bool right = true;
  for (const std::string& file : arguments.files) {
    std::string error;
    if (Scenario::fromFile(file, error)) continue;
    std::istringstream lines(error);
    for (std::string line; std::getline(lines, line);)
      std::fprintf(stderr, "orbd-sim check: %s\n", line.c_str());
    right = false;
  }
  return right ? orbtool::kExitDone : orbtool::kExitFailed;
}

}  // namespace

std::string orReadyScenario() {
  std::string names;
  for (const std::string& name : Scenario::readyNames())
    names += (names.empty() ? ": " : ", ") + name;
  return ", or the name of a ready one" + names + ".";
}

Command addCheck(orbtool::CommandLine& line) {
  const auto arguments = std::make_shared<Arguments>();
  CLI::App* const app = line.app().add_subcommand(
      "check", "Check scenarios without playing them; print one line for each error.");
  CLI::Option* const schema =
      app->add_flag("--schema", arguments->schema, "Print the JSON schema of scenarios.");
  app->add_option("FILE", arguments->files, "A scenario" + orReadyScenario())->type_name("");
  app->footer(
      "Exit status: 0 all are correct, 1 a scenario has an error, 2 wrong arguments.\n"
      "Example: orbd-sim check *.json");
  return {app, [arguments, schema, &line] {
            if (arguments->files.empty() && schema->count() == 0)
              return line.refuse("no FILE given");
            return check(*arguments);
          }};
}

}  // namespace orbsim
