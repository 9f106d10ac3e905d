// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "orbctl/LibraryClient.h"

#include <atomic>

namespace orbctl {
namespace {

// Static, because callbacks have no user-data pointer. Callbacks run on threads of the library only
// while their service is enabled, and the queue lives at least as long.
std::atomic<EventQueue*> theQueue{nullptr};
PerService<std::atomic<uint32_t>> theGeneration = {};

void push(Service service, const EventData& data) {
  EventQueue* const queue = theQueue.load();
  if (queue == nullptr) return;
  queue->push(
      {service, theGeneration[indexOf(service)].load(), Clock::now(), WallClock::now(), data});
}

void onLceStatus(status_e status) { push(Service::kLce, StatusEvent{status}); }
void onLleStatus(status_e status) { push(Service::kLle, StatusEvent{status}); }
void onLliStatus(status_e status) { push(Service::kLli, StatusEvent{status}); }

void onCriteria(LceReportingCriteriaStatus status) { push(Service::kLce, CriteriaEvent{status}); }
void onCapacity(LceEstimationReportStatus status, LceEstimationReport report) {
  push(Service::kLce, CapacityEvent{status, report});
}
void onLatency(int32_t result, const LleEstimationReport* report) {
  push(Service::kLle, LatencyEvent{result == 0, *report});
}
void onHandoff(LliHandoffIndType type, LliPreHandoffState preState, const LliInterruptInfo* info) {
  push(Service::kLli, HandoffEvent{type, preState, *info});
}

bool requestLce(const Requests& requests) {
  if (lceSetReportingCriteria(&requests.lceCriteria, onCriteria) <= 0) return false;
  if (requests.lastReport) return lceGetLastEstimationReport(onCapacity) == 0;
  if (lceRegEstimationReports(onCapacity) != 0) return false;
  for (const LceReportingAction action : requests.lceActions) {
    if (lcePerformReportingAction(action) != 0) return false;
  }
  return true;
}

bool requestLle(const Requests& requests) {
  if (!requests.lastReport && lleRegEstimationReports(onLatency) != 0) return false;
  if (lleSetReportingCriteria(requests.lleCriteria) != 0) return false;
  return !requests.lastReport || lleGetLastEstimationReport(onLatency) == 0;
}

bool requestLli(const Requests&) { return lliRegLinkInterruptInd(onHandoff) == 0; }

struct Calls {
  int (*enable)(void (*onStatus)(status_e));
  void (*onStatus)(status_e);
  bool (*request)(const Requests& requests);
  int (*disable)();
};
constexpr PerService<Calls> kCalls = {{{orb_lce_enable, onLceStatus, requestLce, orb_lce_disable},
                                       {orb_lle_enable, onLleStatus, requestLle, orb_lle_disable},
                                       {orb_lli_enable, onLliStatus, requestLli, orb_lli_disable}}};

}  // namespace

LibraryClient::LibraryClient(EventQueue& queue) { theQueue.store(&queue); }

LibraryClient::~LibraryClient() {
  for (const Service service : kAllServices) disable(service);
  theQueue.store(nullptr);
}

bool LibraryClient::enable(Service service) {
  const Calls& calls = kCalls[indexOf(service)];
  if (calls.enable(calls.onStatus) != 1) return false;
  mEnabled[indexOf(service)] = true;
  return true;
}

bool LibraryClient::request(Service service, const Requests& requests) {
  return kCalls[indexOf(service)].request(requests);
}

void LibraryClient::disable(Service service) {
  if (!mEnabled[indexOf(service)]) return;
  mEnabled[indexOf(service)] = false;
  (void)kCalls[indexOf(service)].disable();
  ++theGeneration[indexOf(service)];
}

bool LibraryClient::isCurrent(const Event& event) const {
  return mEnabled[indexOf(event.service)] &&
         event.generation == theGeneration[indexOf(event.service)].load();
}

}  // namespace orbctl
