// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

#pragma once

#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

#include "Action.h"

// The JSON of scenarios and of the control socket. A fault is one line: the JSON pointer of the
// place and the allowed values. Functions that return nothing report faults.
namespace orbsim {

using Json = nlohmann::json;

std::optional<Json> parseJson(const std::string& text, std::string& error);
// The JSON pointer of a member or an element.
std::string placeOf(const std::string& place, const std::string& member);

// Checks a whole scenario, or a step of the timeline without its time, with the schema.
std::vector<std::string> schemaFaults(const Json& scenario);
bool checkAction(const Json& json, std::string& error);

// For JSON that matches the schema. `json` has one member for the action, and optionally "at".
std::optional<Action> readAction(const Json& json, const std::string& place, std::string& error);
// Skips elements of the timeline and of the expectations that are null. Adds errors to `faults`.
ScenarioData readScenario(const Json& json, std::vector<std::string>& faults);

}  // namespace orbsim
