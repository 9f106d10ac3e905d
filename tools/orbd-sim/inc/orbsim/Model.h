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

// When the model's time begins. Before that, requests are answered, but no reports are sent.
enum class Begin {
  kFirstUse,   // when the first client requests reports
  kListening,  // when the daemon starts
  kConnected,  // with the first session
  kReporting   // when reports of each of the services `ModelSettings::beginWith` are wanted
};

// The settings of the device model; fixed for the daemon's lifetime.
struct ModelSettings {
  std::string rat = "lte";          // the first technology: a word of technologyWords()
  bool handoffs = true;             // whether handoffs happen without an order
  std::optional<uint32_t> rate;     // fixed rate in kbit/s; without: the rate varies
  std::optional<uint64_t> latency;  // fixed latency in microseconds; without: it varies
  Begin begin = Begin::kFirstUse;
  std::set<uint32_t> beginWith;  // service numbers, for Begin::kReporting
};

// An ordered handoff: announced at once, started after `notice`, ended after `duration`.
struct HandoffOrder {
  enum class Result { kSuccess, kFailure, kCalledOff };

  std::string target;  // a word of technologyWords()
  Milliseconds notice{1000};
  Milliseconds duration{100};
  Result result = Result::kSuccess;

  // The reason why the handoff has no effect if the device has that technology.
  std::string alreadyThere() const { return "the device is on " + target + " already"; }
};

// A changing value; kbit/s for a rate, microseconds for a latency.
struct Ramp {
  std::optional<uint64_t> from;  // without: from the current value
  uint64_t to = 0;
  Milliseconds over{0};
};

// The words for radio technologies, separated by blanks.
const std::string& technologyWords();
bool isTechnologyWord(const std::string& word);

}  // namespace orbsim
