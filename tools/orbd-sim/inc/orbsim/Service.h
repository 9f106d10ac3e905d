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

// One service of the daemon as one session sees it: decodes its requests, keeps the session's state
// and answers through the session. Made when the session's first blob for it comes; owned by the
// session and used only on the session's thread, so it has no lock.
class Service {
 public:
  virtual ~Service() = default;

  virtual void handleBlob(const Blob& blob) = 0;
  // When the service next wants handleDue(); nothing while it only answers.
  virtual std::optional<Clock::time_point> nextDue() { return std::nullopt; }
  virtual void handleDue() {}
};

// Short name of a service for the log.
const char* serviceName(uint32_t sdkType);
// The service with that number, or nothing when this daemon does not offer it.
std::unique_ptr<Service> makeService(uint32_t sdkType, Session& session, Control& control);

}  // namespace orbsim
