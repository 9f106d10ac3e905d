// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

// The one file that includes the schema library, which is slow to compile.

#include <valijson/adapters/nlohmann_json_adapter.hpp>
#include <valijson/schema.hpp>
#include <valijson/schema_parser.hpp>
#include <valijson/validation_results.hpp>
#include <valijson/validator.hpp>

#include "Json.h"
#include "ScenarioSchema.h"
#include "orbsim/Scenario.h"

namespace orbsim {
namespace {

using valijson::adapters::NlohmannJsonAdapter;

// "[timeline]" and "[0]" to "/timeline/0"; "<root>" stands before all.
std::string placeOf(const std::vector<std::string>& context) {
  std::string place;
  for (const std::string& part : context) {
    if (part.size() < 2 || part.front() != '[') continue;
    place = orbsim::placeOf(place, part.substr(1, part.size() - 2));
  }
  return place.empty() ? "/" : place;
}

// Of all that is found wrong, what is deepest names the place best.
bool check(const Json& schemaJson, const Json& json, std::string& error) {
  valijson::Schema schema;
  valijson::SchemaParser parser;
  parser.populateSchema(NlohmannJsonAdapter(schemaJson), schema);
  valijson::Validator validator;
  valijson::ValidationResults results;
  if (validator.validate(schema, NlohmannJsonAdapter(json), &results)) return true;
  valijson::ValidationResults::Error found;
  size_t depth = 0;
  while (results.popError(found)) {
    if (found.context.size() <= depth) continue;
    depth = found.context.size();
    error = placeOf(found.context) + ": " + found.description;
  }
  return false;
}

const Json& schemaJson() {
  static const Json json = Json::parse(kScenarioSchema);
  return json;
}

}  // namespace

const std::string& Scenario::schema() {
  static const std::string text = kScenarioSchema;
  return text;
}

bool checkScenario(const Json& json, std::string& error) {
  return check(schemaJson(), json, error);
}

// As a step of the timeline, which has a time besides.
bool checkAction(const Json& json, std::string& error) {
  static const Json schema = [] {
    Json action = schemaJson().at("properties").at("timeline").at("items");
    action.erase("required");
    action["properties"].erase("at");
    action["properties"]["status"] = {{"type", "boolean"}};
    action["minProperties"] = action["maxProperties"] = 1;
    action["definitions"] = schemaJson().at("definitions");
    return action;
  }();
  return check(schema, json, error);
}

}  // namespace orbsim
