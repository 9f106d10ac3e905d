// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

// Only this file includes the schema library, because it compiles slowly.

#include <algorithm>
#include <set>
#include <utility>
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

// Explains why a value does not match the schema. The schema library decides whether it matches.
// This class knows only the schema keywords that schema.json uses. One object is for one value.
class Explanation {
 public:
  explicit Explanation(const Json& root) : mRoot(root) {}

  void look(const Json& schema, const Json& value, const std::string& place) {
    const Json& rules = resolved(schema);
    for (const Json& also : rules.value("allOf", Json::array())) look(also, value, place);
    if (!fits(rules, value))
      return say(place, "wrong value " + value.dump() + "; allowed: " + allowed(rules));
    if (value.is_object()) lookAtMembers(rules, value, place);
    if (!value.is_array() || !rules.contains("items")) return;
    for (size_t i = 0; i < value.size(); ++i)
      look(rules.at("items"), value.at(i), orbsim::placeOf(place, std::to_string(i)));
  }
  std::vector<std::string> take() { return std::move(mFaults); }

 private:
  void say(const std::string& place, const std::string& what) {
    mFaults.push_back((place.empty() ? "/" : place) + ": " + what);
  }

  const Json& resolved(const Json& schema) const {
    if (!schema.contains("$ref")) return schema;
    return mRoot.at(Json::json_pointer(schema.at("$ref").get<std::string>().substr(1)));
  }

  static Json typesOf(const Json& rules) {
    const Json types = rules.value("type", Json::array());
    return types.is_array() ? types : Json::array({types});
  }
  // Splits "^(one|other)$" into its words.
  static std::vector<std::string> wordsOf(const Json& rules) {
    std::vector<std::string> words;
    for (const Json& word : rules.value("enum", Json::array())) {
      words.push_back(word.is_string() ? word.get<std::string>() : word.dump());
    }
    if (!rules.contains("pattern")) return words;
    std::string word;
    for (const char letter : rules.at("pattern").get<std::string>() + "|") {
      if (letter == '|') {
        words.push_back(std::exchange(word, {}));
      } else if (std::string("^()$").find(letter) == std::string::npos) {
        word += letter;
      }
    }
    return words;
  }
  static bool isOf(const std::string& type, const Json& value) {
    if (type == "number") return value.is_number();
    if (type == "integer") return value.is_number_integer();
    return type == value.type_name();
  }
  static bool fits(const Json& rules, const Json& value) {
    const Json types = typesOf(rules);
    const bool known = std::any_of(types.begin(), types.end(), [&value](const Json& type) {
      return isOf(type.get<std::string>(), value);
    });
    if (!types.empty() && !known) return false;
    const auto words = wordsOf(rules);
    const bool isWord = value.is_string() || value.is_boolean();
    const std::string word = value.is_string() ? value.get<std::string>() : value.dump();
    if (isWord && !words.empty() && std::find(words.begin(), words.end(), word) == words.end()) {
      // A pattern applies only to texts.
      if (value.is_string() || rules.contains("enum")) return false;
    }
    if (value.is_number() && value < rules.value("minimum", value)) return false;
    if (value.is_number() && value > rules.value("maximum", value)) return false;
    if (!value.is_array()) return true;
    const bool repeats = std::set<Json>(value.begin(), value.end()).size() < value.size();
    return value.size() >= rules.value("minItems", size_t{0}) &&
           !(rules.value("uniqueItems", false) && repeats);
  }

  static std::string join(const std::vector<std::string>& words, const std::string& between) {
    std::string all;
    for (const std::string& word : words) all += (all.empty() ? "" : between) + word;
    return all;
  }
  static std::vector<std::string> namesOf(const Json& object, const Json& without = Json::array()) {
    std::vector<std::string> names;
    for (const auto& member : object.items()) {
      if (std::find(without.begin(), without.end(), member.key()) == without.end())
        names.push_back(member.key());
    }
    return names;
  }
  std::string allowed(const Json& schema) const {
    const Json& rules = resolved(schema);
    std::vector<std::string> ways;
    for (const Json& also : rules.value("allOf", Json::array())) ways.push_back(allowed(also));
    for (const Json& type : typesOf(rules)) ways.push_back(allowed(type.get<std::string>(), rules));
    return join(ways, " or ");
  }
  std::string allowed(const std::string& type, const Json& rules) const {
    const auto words = wordsOf(rules);
    if (type == "object") {
      const auto names = namesOf(rules.value("properties", Json::object()));
      return names.empty() ? "an object" : "an object of " + join(names, ", ");
    }
    if (type == "array") {
      const std::string list =
          rules.value("uniqueItems", false) ? "a list without duplicates" : "a list";
      return rules.contains("items") ? list + " of " + allowed(rules.at("items")) : list;
    }
    if (type == "boolean") return words.empty() ? "true or false" : join(words, ", ");
    if (type == "string") return words.empty() ? "a text" : join(words, ", ");
    std::string number = type == "integer" ? "a whole number" : "a number";
    if (rules.contains("minimum")) number += " from " + rules.at("minimum").dump();
    if (rules.contains("maximum")) number += " to " + rules.at("maximum").dump();
    return number;
  }

  void lookAtMembers(const Json& rules, const Json& value, const std::string& place) {
    const Json members = rules.value("properties", Json::object());
    const Json required = rules.value("required", Json::array());
    const Json others = rules.value("additionalProperties", Json());
    bool misses = false;
    for (const Json& name : required) {
      if (value.contains(name.get<std::string>())) continue;
      misses = true;
      say(place, name.get<std::string>() + " is missing");
    }
    bool unknown = false;
    for (const auto& member : value.items()) {
      const std::string there = orbsim::placeOf(place, member.key());
      if (members.contains(member.key())) {
        look(members.at(member.key()), member.value(), there);
      } else if (others.is_object()) {
        look(others, member.value(), there);
      } else if (others.is_boolean()) {
        unknown = true;
        say(place, "unknown member " + member.key() + "; allowed: " + join(namesOf(members), ", "));
      }
    }
    if (misses || unknown) return;
    const std::string one = "allowed is one of " + join(namesOf(members, required), ", ");
    if (value.size() < rules.value("minProperties", size_t{0}))
      say(place, "a member is missing; " + one);
    if (value.size() > rules.value("maxProperties", value.size()))
      say(place, join(namesOf(value, required), " and ") + " together; " + one);
  }

  const Json& mRoot;
  std::vector<std::string> mFaults;
};

// Faults in the order of the schema. If only the library finds a fault: the text of the library.
std::vector<std::string> faultsOf(const Json& schemaJson, const Json& json) {
  valijson::Schema schema;
  valijson::SchemaParser parser;
  parser.populateSchema(NlohmannJsonAdapter(schemaJson), schema);
  valijson::Validator validator;
  valijson::ValidationResults results;
  if (validator.validate(schema, NlohmannJsonAdapter(json), &results)) return {};
  Explanation explanation(schemaJson);
  explanation.look(schemaJson, json, "");
  std::vector<std::string> faults = explanation.take();
  valijson::ValidationResults::Error found;
  while (faults.empty() && results.popError(found)) faults.push_back("/: " + found.description);
  return faults;
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

std::vector<std::string> schemaFaults(const Json& scenario) {
  return faultsOf(schemaJson(), scenario);
}

// Like a step of the timeline, which also has a time.
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
  const auto faults = faultsOf(schema, json);
  if (!faults.empty()) error = faults.front();
  return faults.empty();
}

}  // namespace orbsim
