// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

#pragma once

#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

#include "Action.h"

// The JSON of scenarios and of the control socket. A fault is one line that begins with the JSON
// pointer of its place and tells what is allowed there; functions that give nothing tell of faults.
namespace orbsim {

using Json = nlohmann::json;

std::optional<Json> parseJson(const std::string& text, std::string& error);
// The pointer of a member or an element.
std::string placeOf(const std::string& place, const std::string& member);

// What the schema says of a whole scenario, and of a step of the timeline without its time.
std::vector<std::string> schemaFaults(const Json& scenario);
bool checkAction(const Json& json, std::string& error);

// Of JSON that the schema has passed. `json` has one member that says what is to be done, and
// perhaps "at".
std::optional<Action> readAction(const Json& json, const std::string& place, std::string& error);
// Elements of the timeline and of the expectations that are null are passed over. What is wrong is
// added to `faults`.
ScenarioData readScenario(const Json& json, std::vector<std::string>& faults);

}  // namespace orbsim
