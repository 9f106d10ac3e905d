// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

#pragma once

#include <nlohmann/json.hpp>
#include <optional>
#include <string>

#include "Action.h"

// The JSON of scenarios and of the control socket. Functions that give nothing set `error` to one
// line that begins with the JSON pointer of the place.
namespace orbsim {

using Json = nlohmann::json;

std::optional<Json> parseJson(const std::string& text, std::string& error);
// The pointer of a member or an element.
std::string placeOf(const std::string& place, const std::string& member);

// What the schema says of a whole scenario, or of an object of the schema's definitions.
bool checkScenario(const Json& json, std::string& error);
bool checkAction(const Json& json, std::string& error);

// Of JSON that the schema has passed. `json` has one member that says what is to be done, and
// perhaps "at".
std::optional<Action> readAction(const Json& json, const std::string& place, std::string& error);
std::optional<ScenarioData> readScenario(const Json& json, std::string& error);

}  // namespace orbsim
