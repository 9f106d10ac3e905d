// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "orbctl/LibraryClient.h"
#include "orbctl/Output.h"

namespace orbctl {

// The options of `watch` and `report`.
struct WatchSettings {
  std::string name;  // name of the command, for messages
  std::vector<Service> services;
  Requests requests;
  bool json = false;
  std::string csv;  // a file; "-": standard output; empty: none
  ColorChoice color = ColorChoice::kAuto;
  std::optional<std::chrono::milliseconds> time;
  std::optional<uint64_t> count;  // number of reports and indications
  bool endsWhenRefused = false;
};

// Shows what the services send until a time limit, a count, a key or a signal ends it. Returns the
// exit status.
int watch(const WatchSettings& settings);

}  // namespace orbctl
