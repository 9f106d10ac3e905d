// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

#pragma once

#include <chrono>
#include <memory>
#include <optional>

#include "orbsim/Control.h"
#include "orbsim/Frame.h"
#include "orbsim/World.h"

namespace orbsim {

class Session;

// One service of the daemon for one session. Decodes its requests, keeps the session's state and
// answers through the session. Created when the first blob for it arrives. Owned by the session and
// used only on the session's thread, so it has no lock.
class Service {
 public:
  virtual ~Service() = default;

  virtual void handleBlob(const Blob& blob) = 0;
  // When the service next needs handleDue(); empty if it only answers.
  virtual std::optional<Clock::time_point> nextDue() { return std::nullopt; }
  virtual void handleDue() {}
};

// The short name of a service for the log.
const char* serviceName(uint32_t sdkType);
// The service with that number, or null if this daemon does not have it.
std::unique_ptr<Service> makeService(uint32_t sdkType, Session& session, Control& control);

}  // namespace orbsim
