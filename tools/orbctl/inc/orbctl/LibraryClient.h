// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <vector>

#include "orbctl/Event.h"
#include "orbctl/EventQueue.h"

namespace orbctl {

// The requests to send after the services are enabled.
struct Requests {
  LceReportingCriteria lceCriteria = {};
  std::vector<LceReportingAction> lceActions = {LCE_REPORTING_ACTION_START};
  uint32_t lleCriteria = 1;
  // Request the latest report once instead of periodic reports.
  bool lastReport = false;
};

// One set of calls for the three services of the library. Callbacks put all data into the queue as
// events with the number of the enabling, so that events of an earlier enabling can be recognised.
// One object per process, because callbacks find the queue in a static variable. Used by the main
// thread; no lock.
class LibraryClient {
 public:
  explicit LibraryClient(EventQueue& queue);
  // Disables all services; no callback runs afterwards.
  ~LibraryClient();
  LibraryClient(const LibraryClient&) = delete;
  LibraryClient& operator=(const LibraryClient&) = delete;

  // Enables the service, or enables it again; a StatusEvent has the result. False if the library
  // could not be set up.
  bool enable(Service service);
  // Sends the requests to an enabled service. False if one was refused at once.
  bool request(Service service, const Requests& requests);
  // Takes up to half a second if the daemon is silent.
  void disable(Service service);
  // Whether the event belongs to the current enabling of its service.
  bool isCurrent(const Event& event) const;

 private:
  PerService<bool> mEnabled = {};
};

}  // namespace orbctl
