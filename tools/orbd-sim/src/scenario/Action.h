// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

#pragma once

#include <chrono>
#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <variant>
#include <vector>

#include "orbsim/Faults.h"
#include "orbsim/Model.h"
#include "orbsim/Requests.h"

namespace orbsim {

// The possible actions, at a time of a scenario, or now by `orbd-sim ctl`.
struct RateAction {
  std::optional<Ramp> ramp;  // without: the rate varies again
};
struct LatencyAction {
  std::optional<Ramp> ramp;
};
struct TechnologyAction {
  std::string rat;
};
struct VanishAction {
  Milliseconds length;
};
struct DelayAction {
  Milliseconds delay;
};
struct FaultAction {
  Faults faults;
  std::string words;
  std::optional<Milliseconds> length;
};
struct PauseAction {
  bool on;
  std::optional<Milliseconds> length;
};
struct SendAction {
  uint32_t sdkType;
  Blob blob;
};
struct DropAction {
  std::optional<uint32_t> sessionId;  // without: all
};
struct StatusAction {};

using Action = std::variant<HandoffOrder, RateAction, LatencyAction, TechnologyAction, VanishAction,
                            DelayAction, Refusal, FaultAction, PauseAction, SendAction, DropAction,
                            StatusAction>;

struct Step {
  Milliseconds at{0};
  Action action;
  std::string words;  // the JSON text without the time
};

// An expectation for a client. Times are those of the scenario.
struct Expectation {
  enum class Kind { kSends, kSendsNot, kReconnects, kAtMost };

  Kind kind = Kind::kSends;
  std::string place;  // JSON pointer
  uint32_t sdkType = 0;
  std::string request;  // empty: any
  std::map<std::string, std::string> fields;
  uint64_t most = 0;
  std::optional<Milliseconds> after;   // without: from the start
  std::optional<Milliseconds> within;  // without: to the end
};

struct ScenarioData {
  std::string name;
  std::string description;
  uint64_t seed = 1;
  Milliseconds interval{500};
  ModelSettings model;
  std::vector<Step> timeline;  // sorted by time
  std::vector<Expectation> expectations;
  std::optional<Milliseconds> end;
};

}  // namespace orbsim
