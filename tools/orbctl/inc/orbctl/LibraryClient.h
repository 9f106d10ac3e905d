// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <vector>

#include "orbctl/Event.h"
#include "orbctl/EventQueue.h"

namespace orbctl {

// What the services are asked for once they are enabled.
struct Requests {
  LceReportingCriteria lceCriteria = {};
  std::vector<LceReportingAction> lceActions = {LCE_REPORTING_ACTION_START};
  uint32_t lleCriteria = 1;
  // The latest report once, in the place of periodic ones.
  bool lastReport = false;
};

// The three services of the library behind one set of calls. Everything that a callback is given
// goes into the queue as an event, with the number of the service's enabling: so events of an
// earlier one can be told from those of the present. One object per process, as callbacks find the
// queue in a static variable; made and used by the main thread, no lock.
class LibraryClient {
 public:
  explicit LibraryClient(EventQueue& queue);
  // Disables what is enabled; afterwards no callback runs.
  ~LibraryClient();
  LibraryClient(const LibraryClient&) = delete;
  LibraryClient& operator=(const LibraryClient&) = delete;

  // Asks for the service, or asks anew; the outcome comes as a StatusEvent. False: the library
  // could not be set up.
  bool enable(Service service);
  // Asks an enabled service for what the requests say. False: one was refused at once.
  bool request(Service service, const Requests& requests);
  // Takes up to half a second with a daemon that is silent.
  void disable(Service service);
  // Whether the event belongs to the present enabling of its service.
  bool isCurrent(const Event& event) const;

 private:
  PerService<bool> mEnabled = {};
};

}  // namespace orbctl
