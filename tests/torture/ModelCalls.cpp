// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "ModelCalls.h"

#include <utility>

#include "AllocationStop.h"
#include "FunctionTable.h"

namespace torture {
namespace {

using What = ModelBooks::What;

ModelCalls::Inside gInside = nullptr;
thread_local int tDepth = 0;
thread_local int tCalls = 0;
constexpr std::chrono::milliseconds kStop(4);

// Where to stop the thread's next call, and how much progress of other threads ends the stop.
struct Stop {
  size_t place = 0;
  uint64_t events = 0;
};
thread_local Stop tStop;

void callback(Kind kind, size_t number, int value, uint64_t connection) {
  const AllocationStop::Pause pause;
  const int account = static_cast<int>(number);
  ModelBooks::get().beginCallback(kind, account, value, connection, tCalls > 0);
  ++tDepth;
  if (gInside != nullptr) gInside(kind, account);
  --tDepth;
  ModelBooks::get().endCallback(kind, account);
}

// The daemon's reports contain the number of their connection.
template <Kind kKind>
struct Owner {
  template <class Status>
  static void called(size_t number, Status status) {
    callback(kKind, number, static_cast<int>(status), 0);
  }
  static void called(size_t number, LceEstimationReportStatus status, LceEstimationReport report) {
    callback(kKind, number, status, report.rate);
  }
  static void called(size_t number, int32_t result, const LleEstimationReport* report) {
    callback(kKind, number, result, report->ulLatencyEstimation);
  }
  static void called(size_t number, LliHandoffIndType type, LliPreHandoffState,
                     const LliInterruptInfo* info) {
    callback(kKind, number, type, info->estimatedTimeToInterruption);
  }
};
template <Kind kKind, class... Arguments>
using Table = FunctionTable<Owner<kKind>, ModelBooks::kPerKind, Arguments...>;
template <Kind kKind>
using Status = Table<kKind, status_e>;
template <Kind kKind>
using StatusV2 = Table<kKind, status_v2_e>;
template <Kind kKind>
using LceReport = Table<kKind, LceEstimationReportStatus, LceEstimationReport>;
template <Kind kKind>
using LleReport = Table<kKind, int32_t, const LleEstimationReport*>;

// Makes one call and records it. @p call returns the result; it was accepted if that is @p good, or
// above 0 if @p good is kId.
constexpr int64_t kId = INT64_MAX;
template <class Function>
bool onBooks(What what, Service service, int64_t good, Function function, Kind kind = kKinds,
             int account = -1, uint32_t tag = 0) {
  ModelBooks& books = ModelBooks::get();
  const ModelBooks::Call call = books.begin(what, service, tDepth > 0);
  const Stop stop = std::exchange(tStop, {});
  ++tCalls;
  const int64_t result = [&] {
    const AllocationStop here(stop.place,
                              [&stop] { ModelBooks::get().awaitProgress(stop.events, kStop); });
    return static_cast<int64_t>(function());
  }();
  --tCalls;
  const bool accepted = good == kId ? result > 0 : result == good;
  books.end(call, result, accepted, kind, account);
  if (tag != 0) books.tagged(tag, call, accepted);
  return accepted;
}
// A call that registers a function of @p kind.
template <class Function>
bool registering(What what, Kind kind, int64_t good, Function function, uint32_t tag = 0) {
  const int account = ModelBooks::get().open(kind);
  if (account < 0) return false;
  const auto number = static_cast<size_t>(account);
  return onBooks(
      what, serviceOf(kind), good, [&] { return function(number); }, kind, account, tag);
}

bool criteria() {
  const uint32_t tag = ModelBooks::get().tag();
  LceReportingCriteria criteria = {};
  criteria.criteriaValue1 = tag;
  return registering(
      What::Request, kLceCriteria, kId,
      [&](size_t number) {
        return lceSetReportingCriteria(&criteria,
                                       Table<kLceCriteria, LceReportingCriteriaStatus>::at(number));
      },
      tag);
}

bool requestLce(uint32_t which) {
  switch (which % 4) {
    case 0:
      return criteria();
    case 1:
      return onBooks(What::Request, kLce, 0,
                     [] { return lcePerformReportingAction(LCE_REPORTING_ACTION_START); });
    case 2:
      return registering(What::Request, kLceReport, 0, [](size_t number) {
        return lceRegEstimationReports(LceReport<kLceReport>::at(number));
      });
    default:
      return registering(What::Request, kLceLast, 0, [](size_t number) {
        return lceGetLastEstimationReport(LceReport<kLceLast>::at(number));
      });
  }
}

bool requestLle(uint32_t which) {
  if (which % 3 == 0) {
    const uint32_t tag = ModelBooks::get().tag();
    return onBooks(
        What::Request, kLle, 0, [tag] { return lleSetReportingCriteria(tag); }, kKinds, -1, tag);
  }
  if (which % 3 == 1) {
    return registering(What::Request, kLleReport, 0, [](size_t number) {
      return lleRegEstimationReports(LleReport<kLleReport>::at(number));
    });
  }
  return registering(What::Request, kLleLast, 0, [](size_t number) {
    return lleGetLastEstimationReport(LleReport<kLleLast>::at(number));
  });
}

bool requestLli() {
  return registering(What::Request, kLliInterrupt, 0, [](size_t number) {
    return lliRegLinkInterruptInd(
        Table<kLliInterrupt, LliHandoffIndType, LliPreHandoffState, const LliInterruptInfo*>::at(
            number));
  });
}

int64_t invalidRequest(Service service, uint32_t which) {
  const LceReportingCriteria tooMany = {{}, LCE_REPORTING_CRITERIA_LIST_MAX + 1, {}, 0, 0,
                                        0,  SDL_ACCESS_NETWORK_TYPE_NONE};
  switch (service) {
    case kLce:
      if (which % 4 == 0) return lceSetReportingCriteria(nullptr, nullptr);
      if (which % 4 == 1) return lceSetReportingCriteria(&tooMany, [](auto) { abort(); });
      if (which % 4 == 2) return lceGetLastEstimationReport(nullptr);
      return lcePerformReportingAction(static_cast<LceReportingAction>(4));
    case kLle:
      return which % 2 == 0 ? lleGetLastEstimationReport(nullptr)
                            : lleRegEstimationReports(nullptr);
    default:
      return lliRegLinkInterruptInd(nullptr);
  }
}

}  // namespace

void ModelCalls::stopNextAt(size_t place, uint64_t events) { tStop = {place, events}; }

void ModelCalls::setInside(Inside inside) { gInside = inside; }

bool ModelCalls::insideCallback() { return tDepth > 0; }

bool ModelCalls::enable(Service service, bool second) {
  const auto with = [&](Kind kind, auto function) {
    return registering(What::Enable, kind, second ? 0 : 1, function);
  };
  switch (service) {
    case kLce:
      return second ? with(kLceStatusV2,
                           [](size_t n) { return createLceClient(StatusV2<kLceStatusV2>::at(n)); })
                    : with(kLceStatus,
                           [](size_t n) { return orb_lce_enable(Status<kLceStatus>::at(n)); });
    case kLle:
      return second ? with(kLleStatusV2,
                           [](size_t n) { return createLleClient(StatusV2<kLleStatusV2>::at(n)); })
                    : with(kLleStatus,
                           [](size_t n) { return orb_lle_enable(Status<kLleStatus>::at(n)); });
    default:
      return second ? with(kLliStatusV2,
                           [](size_t n) { return createLliClient(StatusV2<kLliStatusV2>::at(n)); })
                    : with(kLliStatus,
                           [](size_t n) { return orb_lli_enable(Status<kLliStatus>::at(n)); });
  }
}

bool ModelCalls::disable(Service service, bool second) {
  return onBooks(What::Disable, service, second ? 0 : 1,
                 [&] { return second ? torture::destroy(service) : torture::disable(service); });
}

bool ModelCalls::request(Service service, uint32_t which) {
  switch (service) {
    case kLce:
      return requestLce(which);
    case kLle:
      return requestLle(which);
    default:
      return requestLli();
  }
}

bool ModelCalls::invalid(Service service, uint32_t which) {
  if (which % 5 == 0) {
    const Callbacks none = {};
    return which % 2 == 0
               ? onBooks(What::EnableNull, service, 1,
                         [&] { return torture::enable(none, service); })
               : onBooks(What::EnableNull, service, 0, [&] { return create(none, service); });
  }
  return onBooks(What::RequestInvalid, service, 0,
                 [&] { return invalidRequest(service, which / 5); });
}

}  // namespace torture
