// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <set>
#include <string>

namespace orbsim {

using Milliseconds = std::chrono::milliseconds;

// When the model's time begins. Until then requests are answered, and nothing is reported.
enum class Begin {
  kFirstUse,   // with the first report that a client wants
  kListening,  // with the daemon's start
  kConnected,  // with the first session
  kReporting   // when reports of each of the services `ModelSettings::beginWith` are wanted
};

// How the device of the model is set up; fixed for the daemon's life.
struct ModelSettings {
  std::string rat = "lte";          // where it is at first: a word of technologyWords()
  bool handoffs = true;             // it changes its technology by itself
  std::optional<uint32_t> rate;     // kbit/s, held; otherwise the rate wanders
  std::optional<uint64_t> latency;  // microseconds, held; otherwise it wanders
  Begin begin = Begin::kFirstUse;
  std::set<uint32_t> beginWith;  // service numbers, for Begin::kReporting
};

// A handoff on order: announced at once, begun after `notice`, over after `duration`.
struct HandoffOrder {
  enum class Result { kSuccess, kFailure, kCalledOff };

  std::string target;  // a word of technologyWords()
  Milliseconds notice{1000};
  Milliseconds duration{100};
  Result result = Result::kSuccess;

  // Why nothing comes of it where the device is there.
  std::string alreadyThere() const { return "the device is on " + target + " already"; }
};

// A value on its way; kbit/s for a rate, microseconds for a latency.
struct Ramp {
  std::optional<uint64_t> from;  // without: from what it is
  uint64_t to = 0;
  Milliseconds over{0};
};

// The words for radio technologies, separated by blanks.
const std::string& technologyWords();
bool isTechnologyWord(const std::string& word);

}  // namespace orbsim
