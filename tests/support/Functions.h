// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <orb/sdl.h>

#include <tuple>
#include <vector>

#include "Recorder.h"

namespace torture {

// The three services, as numbers.
enum Service { kLce, kLle, kLli, kServices };
inline const char* nameOf(Service service) {
  constexpr const char* kNames[] = {"Lce", "Lle", "Lli"};
  return kNames[service];
}

// One callback of each kind.
struct Callbacks {
  LceStatusIndCb lceStatus;
  LceStatusV2Cb lceStatusV2;
  LceReportingCriteriaCb lceCriteria;
  LceEstimationReportCb lceLast;
  LceEstimationReportCb lceReport;
  LleStatusIndCb lleStatus;
  LleStatusV2Cb lleStatusV2;
  LleEstimationReportCb lleLast;
  LleEstimationReportCb lleReport;
  LliStatusIndCb lliStatus;
  LliStatusV2Cb lliStatusV2;
  LliLinkInterruptIndCb lliInterrupt;
};

// Callbacks by kind. The status callbacks of the three services are next to each other.
enum Slot {
  kStatus,
  kStatusV2 = kStatus + int{kServices},
  kLceCriteriaCb = kStatusV2 + int{kServices},
  kLceLastCb,
  kLceReportCb,
  kLleLastCb,
  kLleReportCb,
  kLliInterruptCb
};
constexpr Slot slotOf(Slot first, Service service) {
  return static_cast<Slot>(int{first} + int{service});
}

// Callbacks of all kinds that pass on their slot and their first argument.
template <void (*kHear)(Slot slot, int value)>
const Callbacks& callbacksTo() {
  static const Callbacks callbacks{
      [](status_e status) { kHear(slotOf(kStatus, kLce), status); },
      [](status_v2_e status) { kHear(slotOf(kStatusV2, kLce), status); },
      [](LceReportingCriteriaStatus status) { kHear(kLceCriteriaCb, status); },
      [](LceEstimationReportStatus status, LceEstimationReport) { kHear(kLceLastCb, status); },
      [](LceEstimationReportStatus status, LceEstimationReport) { kHear(kLceReportCb, status); },
      [](status_e status) { kHear(slotOf(kStatus, kLle), status); },
      [](status_v2_e status) { kHear(slotOf(kStatusV2, kLle), status); },
      [](int32_t result, const LleEstimationReport*) { kHear(kLleLastCb, result); },
      [](int32_t result, const LleEstimationReport*) { kHear(kLleReportCb, result); },
      [](status_e status) { kHear(slotOf(kStatus, kLli), status); },
      [](status_v2_e status) { kHear(slotOf(kStatusV2, kLli), status); },
      [](LliHandoffIndType type, LliPreHandoffState, const LliInterruptInfo*) {
        kHear(kLliInterruptCb, type);
      }};
  return callbacks;
}

// The calls of all these callbacks, counted.
struct Heard {
  Slot slot;
  int value;

  bool isStatus() const { return slot < kLceCriteriaCb; }  // of either generation
  friend bool operator<(const Heard& a, const Heard& b) {
    return std::tie(a.slot, a.value) < std::tie(b.slot, b.value);
  }
};
using HeardCalls = Recorder<Heard, Keep::Counts>;
inline HeardCalls& heard() { return HeardCalls::get(); }
inline void hear(Slot slot, int value) { heard().add({slot, value}); }
inline const Callbacks& hearing() { return callbacksTo<hear>(); }

// One exported function, called with valid arguments.
struct Function {
  const char* name;
  int64_t (*call)(const Callbacks& callbacks);
};

inline int64_t setCriteria(LceReportingCriteriaCb cb) {
  const LceReportingCriteria criteria = {};
  return lceSetReportingCriteria(&criteria, cb);
}

// All functions that the library exports, except orbSdlSdkVersion, which does the same in every
// state. Never destroyed, because threads may call while the process exits.
inline const std::vector<Function>& functions() {
  using C = const Callbacks&;
  static const auto& all = *new std::vector<Function>{
      {"orb_lce_enable", [](C c) -> int64_t { return orb_lce_enable(c.lceStatus); }},
      {"orb_lce_disable", [](C) -> int64_t { return orb_lce_disable(); }},
      {"createLceClient", [](C c) -> int64_t { return createLceClient(c.lceStatusV2); }},
      {"destroySdfClient", [](C) -> int64_t { return destroySdfClient(); }},
      {"lceSetReportingCriteria", [](C c) { return setCriteria(c.lceCriteria); }},
      {"lceGetLastEstimationReport", [](C c) { return lceGetLastEstimationReport(c.lceLast); }},
      {"lcePerformReportingAction",
       [](C) { return lcePerformReportingAction(LCE_REPORTING_ACTION_START); }},
      {"lceRegEstimationReports", [](C c) { return lceRegEstimationReports(c.lceReport); }},
      {"orb_lle_enable", [](C c) -> int64_t { return orb_lle_enable(c.lleStatus); }},
      {"orb_lle_disable", [](C) -> int64_t { return orb_lle_disable(); }},
      {"createLleClient", [](C c) -> int64_t { return createLleClient(c.lleStatusV2); }},
      {"destroyLleClient", [](C) -> int64_t { return destroyLleClient(); }},
      {"lleSetReportingCriteria", [](C) { return lleSetReportingCriteria(1); }},
      {"lleGetLastEstimationReport", [](C c) { return lleGetLastEstimationReport(c.lleLast); }},
      {"lleRegEstimationReports", [](C c) { return lleRegEstimationReports(c.lleReport); }},
      {"orb_lli_enable", [](C c) -> int64_t { return orb_lli_enable(c.lliStatus); }},
      {"orb_lli_disable", [](C) -> int64_t { return orb_lli_disable(); }},
      {"createLliClient", [](C c) -> int64_t { return createLliClient(c.lliStatusV2); }},
      {"destroyLliClient", [](C) -> int64_t { return destroyLliClient(); }},
      {"lliRegLinkInterruptInd", [](C c) { return lliRegLinkInterruptInd(c.lliInterrupt); }}};
  return all;
}

inline int enable(const Callbacks& callbacks, Service service) {
  switch (service) {
    case kLce:
      return orb_lce_enable(callbacks.lceStatus);
    case kLle:
      return orb_lle_enable(callbacks.lleStatus);
    default:
      return orb_lli_enable(callbacks.lliStatus);
  }
}
inline int create(const Callbacks& callbacks, Service service) {
  switch (service) {
    case kLce:
      return createLceClient(callbacks.lceStatusV2);
    case kLle:
      return createLleClient(callbacks.lleStatusV2);
    default:
      return createLliClient(callbacks.lliStatusV2);
  }
}
inline int disable(Service service) {
  int (*const kDisable[])() = {orb_lce_disable, orb_lle_disable, orb_lli_disable};
  return kDisable[service]();
}
inline int destroy(Service service) {
  int (*const kDestroy[])() = {destroySdfClient, destroyLleClient, destroyLliClient};
  return kDestroy[service]();
}
// A request of the service that goes to the daemon.
inline int64_t request(const Callbacks& callbacks, Service service) {
  switch (service) {
    case kLce:
      return lcePerformReportingAction(LCE_REPORTING_ACTION_STOP);
    case kLle:
      return lleSetReportingCriteria(0x7fffffff);
    default:
      return lliRegLinkInterruptInd(callbacks.lliInterrupt);
  }
}

}  // namespace torture
