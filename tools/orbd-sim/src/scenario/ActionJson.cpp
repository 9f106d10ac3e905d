// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

// Reads actions from JSON that matches the schema, so it checks only what a schema cannot check.

#include <algorithm>
#include <cmath>

#include "Json.h"

namespace orbsim {
namespace {

Milliseconds secondsOf(const Json& value) {
  return Milliseconds(static_cast<int64_t>(std::llround(value.get<double>() * 1000)));
}

Milliseconds secondsOr(const Json& json, const char* name, Milliseconds otherwise) {
  return json.contains(name) ? secondsOf(json.at(name)) : otherwise;
}

uint64_t scaled(const Json& value, double unit) {
  return static_cast<uint64_t>(std::llround(value.get<double>() * unit));
}

// A number, or from..to over a time; empty for "wander".
std::optional<Ramp> rampOf(const Json& value, double unit) {
  if (value.is_string()) return std::nullopt;
  Ramp ramp;
  if (value.is_number()) {
    ramp.to = scaled(value, unit);
    return ramp;
  }
  if (value.contains("from")) ramp.from = scaled(value.at("from"), unit);
  ramp.to = scaled(value.at("to"), unit);
  ramp.over = secondsOr(value, "over", Milliseconds(0));
  return ramp;
}

HandoffOrder handoffOf(const Json& value) {
  HandoffOrder order;
  order.target = value.at("to").get<std::string>();
  order.notice = secondsOr(value, "notice", order.notice);
  order.duration = secondsOr(value, "duration", order.duration);
  const std::string result = value.value("result", "success");
  if (result == "failure") order.result = HandoffOrder::Result::kFailure;
  if (result == "called-off") order.result = HandoffOrder::Result::kCalledOff;
  return order;
}

// Checks that the service has the request.
bool knowsRequest(uint32_t sdkType, const std::string& request) {
  const auto words = requestWords(sdkType);
  return request.empty() || std::find(words.begin(), words.end(), request) != words.end();
}

// The fields of a request. Only set-criteria has fields.
std::string fieldWords(uint32_t sdkType, const std::string& request) {
  if (!request.empty() && request != "set-criteria") return {};
  if (sdkType == serviceNamed("lce")) return "transaction value1 value2 first second network";
  return sdkType == serviceNamed("lle") ? "criteria" : "";
}

std::string fieldText(const Json& value) {
  return value.is_string() ? value.get<std::string>() : value.dump();
}

std::optional<Action> refusalOf(const Json& value, const std::string& place, std::string& error) {
  Refusal refusal;
  const auto service = value.at("service").get<std::string>();
  refusal.sdkType = serviceNamed(service);
  refusal.request = value.value("request", "");
  refusal.with = value.at("with").get<std::string>();
  refusal.times = value.value("times", 1u);
  if (!knowsRequest(refusal.sdkType, refusal.request)) {
    error = placeOf(place, "request") + ": " + service + " has no request " + refusal.request;
    return std::nullopt;
  }
  const std::string wrong = wrongWith(refusal);
  if (wrong.empty()) return refusal;
  error = placeOf(place, "with") + ": " + wrong;
  return std::nullopt;
}

std::optional<Action> faultOf(const Json& value, const std::string& place, std::string& error) {
  FaultAction action;
  action.words = value.at("words").get<std::string>();
  if (value.contains("for")) action.length = secondsOf(value.at("for"));
  std::string wrong;
  if (action.words == "none" || action.faults.parse(action.words, wrong)) return action;
  error = placeOf(place, "words") + ": " + wrong;
  return std::nullopt;
}

std::optional<Action> sendOf(const Json& value, const std::string& place, std::string& error) {
  SendAction action;
  action.sdkType = serviceNamed(value.at("service").get<std::string>());
  std::map<std::string, std::string> fields;
  if (value.contains("fields")) {
    for (const auto& field : value.at("fields").items()) {
      fields[field.key()] = fieldText(field.value());
    }
  }
  std::string wrong;
  action.blob = indicationOf(action.sdkType, fields, wrong);
  if (wrong.empty()) return action;
  error = placeOf(place, "fields") + ": " + wrong;
  return std::nullopt;
}

std::optional<Action> pauseOf(const Json& value, const std::string& place, std::string& error) {
  if (value.is_number()) return PauseAction{true, secondsOf(value)};
  if (value.get<bool>()) return PauseAction{true, {}};
  error = place + ": must be true or a number of seconds";
  return std::nullopt;
}

std::optional<Action> dropOf(const Json& value, const std::string& place, std::string& error) {
  if (value.is_number()) return DropAction{value.get<uint32_t>()};
  if (value.get<bool>()) return DropAction{};
  error = place + ": must be true or a session number";
  return std::nullopt;
}

}  // namespace

std::string placeOf(const std::string& place, const std::string& member) {
  std::string escaped;
  for (const char letter : member) {
    if (letter == '~') {
      escaped += "~0";
    } else if (letter == '/') {
      escaped += "~1";
    } else {
      escaped += letter;
    }
  }
  return place + "/" + escaped;
}

std::optional<Action> readAction(const Json& json, const std::string& place, std::string& error) {
  const auto members = json.items();
  const auto found = std::find_if(members.begin(), members.end(),
                                  [](const auto& member) { return member.key() != "at"; });
  if (found == members.end()) {
    error = place + ": no event is given";
    return std::nullopt;
  }
  const std::string verb = found.key();
  const Json& value = found.value();
  const std::string here = placeOf(place, verb);
  if (verb == "handoff") return handoffOf(value);
  if (verb == "rate") return RateAction{rampOf(value, 1000)};
  if (verb == "latency") return LatencyAction{rampOf(value, 1000)};
  if (verb == "rat") return TechnologyAction{value.get<std::string>()};
  if (verb == "vanish") return VanishAction{secondsOf(value)};
  if (verb == "delay") return DelayAction{secondsOf(value)};
  if (verb == "refuse") return refusalOf(value, here, error);
  if (verb == "fault") return faultOf(value, here, error);
  if (verb == "pause") return pauseOf(value, here, error);
  if (verb == "resume") return PauseAction{false, {}};
  if (verb == "send") return sendOf(value, here, error);
  if (verb == "drop") return dropOf(value, here, error);
  if (verb == "status") return StatusAction{};
  error = here + ": no such event";
  return std::nullopt;
}

namespace {

std::optional<Expectation> expectationOf(const Json& json, const std::string& place,
                                         std::string& error) {
  using Kind = Expectation::Kind;
  const std::string verb = json.begin().key();
  const Json& value = json.begin().value();
  Expectation expectation;
  expectation.place = place;
  if (verb == "sends-not") expectation.kind = Kind::kSendsNot;
  if (verb == "reconnects") expectation.kind = Kind::kReconnects;
  if (verb == "at-most") {
    expectation.kind = Kind::kAtMost;
    expectation.most = value.at("requests").get<uint64_t>();
  }
  const std::string service = value.value("service", "");
  expectation.sdkType = serviceNamed(service);
  expectation.request = value.value("request", "");
  if (!knowsRequest(expectation.sdkType, expectation.request)) {
    error = placeOf(placeOf(place, verb), "request") + ": " + service + " has no request " +
            expectation.request;
    return std::nullopt;
  }
  if (value.contains("fields")) {
    const std::string known = fieldWords(expectation.sdkType, expectation.request);
    for (const auto& field : value.at("fields").items()) {
      expectation.fields[field.key()] = fieldText(field.value());
      if ((" " + known + " ").find(" " + field.key() + " ") != std::string::npos) continue;
      error = placeOf(placeOf(place, verb), "fields") + ": no such field: " + field.key() + "; " +
              (known.empty() ? "this request has no fields" : "fields are " + known);
      return std::nullopt;
    }
  }
  if (value.contains("after")) expectation.after = secondsOf(value.at("after"));
  if (value.contains("within")) expectation.within = secondsOf(value.at("within"));
  return expectation;
}

void readModel(const Json& json, ScenarioData& data) {
  data.model.handoffs = false;
  if (json.contains("begin")) {
    const Json& begin = json.at("begin");
    if (begin.is_array()) {
      data.model.begin = Begin::kReporting;
      for (const Json& service : begin) {
        data.model.beginWith.insert(serviceNamed(service.get<std::string>()));
      }
    } else {
      data.model.begin = begin == "connected" ? Begin::kConnected : Begin::kListening;
    }
  } else {
    data.model.begin = Begin::kListening;
  }
  if (!json.contains("model")) return;
  const Json& model = json.at("model");
  data.model.rat = model.value("rat", data.model.rat);
  data.model.handoffs = model.value("handoffs", false);
  if (model.contains("rate"))
    data.model.rate = static_cast<uint32_t>(scaled(model.at("rate"), 1000));
  if (model.contains("latency")) data.model.latency = scaled(model.at("latency"), 1000);
}

struct Placed {
  Step step;
  std::string place;
};

// Checks steps in the order of time against the steps before them, as far as possible in advance.
class Course {
 public:
  explicit Course(const ModelSettings& model) {
    if (!model.handoffs) mRat = model.rat;
  }

  // The reason why the step cannot happen, with its place; empty if it can.
  std::string wrongWith(const Placed& one) {
    const Milliseconds at = one.step.at;
    if (mHandoff && at >= *mHandoffEnd) arrive();
    if (const auto* const order = std::get_if<HandoffOrder>(&one.step.action)) {
      if (mHandoffEnd && at < *mHandoffEnd) return one.place + ": the previous handoff is not over";
      if (mRat == order->target)
        return placeOf(placeOf(one.place, "handoff"), "to") + ": " + order->alreadyThere();
      mHandoff = *order;
      mHandoffEnd = at + order->notice + order->duration;
    }
    if (const auto* const change = std::get_if<TechnologyAction>(&one.step.action)) {
      if (mRat && mRat != change->rat) {
        mHandoff.reset();
        mRat = change->rat;
      }
    }
    if (const auto* const vanish = std::get_if<VanishAction>(&one.step.action)) {
      if (mBack && at < *mBack) return one.place + ": the daemon is gone already";
      mBack = at + vanish->length;
    }
    return {};
  }

 private:
  void arrive() {
    if (mRat && mHandoff->result == HandoffOrder::Result::kSuccess) mRat = mHandoff->target;
    mHandoff.reset();
  }

  std::optional<std::string> mRat;  // empty: not known, the model chooses technologies
  std::optional<HandoffOrder> mHandoff;
  std::optional<Milliseconds> mHandoffEnd;
  std::optional<Milliseconds> mBack;
};

void readTimeline(const Json& json, ScenarioData& data, std::vector<std::string>& faults) {
  std::vector<Placed> placed;
  for (size_t i = 0; i < json.size(); ++i) {
    if (json.at(i).is_null()) continue;
    const std::string place = placeOf("/timeline", std::to_string(i));
    std::string error;
    const auto action = readAction(json.at(i), place, error);
    if (!action) {
      faults.push_back(error);
      continue;
    }
    Json words = json.at(i);
    words.erase("at");
    placed.push_back({{secondsOf(json.at(i).at("at")), *action, words.dump()}, place});
  }
  std::stable_sort(placed.begin(), placed.end(), [](const Placed& one, const Placed& other) {
    return one.step.at < other.step.at;
  });
  Course course(data.model);
  for (const Placed& one : placed) {
    const std::string wrong = course.wrongWith(one);
    if (!wrong.empty()) faults.push_back(wrong);
    data.timeline.push_back(one.step);
  }
}

}  // namespace

std::optional<Json> parseJson(const std::string& text, std::string& error) {
  try {
    return Json::parse(text);
  } catch (const Json::parse_error& wrong) {
    // "[json.exception.parse_error.101] parse error at line 1, column 2: ..."
    error = wrong.what();
    const size_t start = error.find("parse error at ");
    if (start != std::string::npos) error = error.substr(start + 15);
    std::replace(error.begin(), error.end(), '\n', ' ');
    return std::nullopt;
  }
}

ScenarioData readScenario(const Json& json, std::vector<std::string>& faults) {
  ScenarioData data;
  data.name = json.value("name", "");
  data.description = json.value("description", "");
  data.seed = json.value("seed", data.seed);
  if (json.contains("interval")) data.interval = secondsOf(json.at("interval"));
  if (json.contains("end")) data.end = secondsOf(json.at("end"));
  readModel(json, data);
  if (json.contains("timeline")) readTimeline(json.at("timeline"), data, faults);
  const Json expect = json.value("expect", Json::array());
  for (size_t i = 0; i < expect.size(); ++i) {
    if (expect.at(i).is_null()) continue;
    std::string error;
    auto one = expectationOf(expect.at(i), placeOf("/expect", std::to_string(i)), error);
    if (!one) {
      faults.push_back(error);
      continue;
    }
    data.expectations.push_back(std::move(*one));
  }
  return data;
}

}  // namespace orbsim
