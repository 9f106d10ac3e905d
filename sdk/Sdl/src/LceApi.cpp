// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
// The exported LCE functions: argument checks around the service object.
#include <orb/lce.h>

#include "ClientLceUtils.h"
#include "Guarded.h"
#include "Lce.h"

namespace {

constexpr uint8_t kListMax = LCE_REPORTING_CRITERIA_LIST_MAX;

// How the second generation of enable and disable says yes and no.
int createResult(bool done) { return done ? 0 : -1; }

bool isValid(const LceReportingCriteria* criteria) {
  return criteria != nullptr && ClientLceUtils::isAccessNwTypeValid(criteria->accessNetworkType) &&
         criteria->firstListCount <= kListMax && criteria->secondListCount <= kListMax;
}

std::shared_ptr<Lce> lce(const char* function, int line) {
  return Service::ready<Lce>(Lce::kTable, {{function, line, "Failed to get SDK instance"},
                                           {function, line, "Failed to get SDK client instance"}});
}

}  // namespace

extern "C" {

int orb_lce_enable(LceStatusIndCb cb) {
  return guarded([&] { return Service::enable(Lce::kTable, cb) ? 1 : 0; }, 0);
}

int orb_lce_disable(void) {
  return guarded([] { return Service::disable(Lce::kTable) ? 1 : 0; }, 0);
}

int createLceClient(LceStatusV2Cb cb) {
  return guarded([&] { return createResult(Service::create(Lce::kTable, cb)); }, -1);
}

int destroySdfClient(void) {
  return guarded([] { return createResult(Service::destroy(Lce::kTable)); }, -1);
}

int64_t lceSetReportingCriteria(const LceReportingCriteria* criteria, LceReportingCriteriaCb cb) {
  const auto object = lce(__func__, __LINE__);
  if (!object) return kNoService;
  if (cb == nullptr || !isValid(criteria)) return kInvalidArguments;
  return guarded([&] { return object->setReportingCriteria(*criteria, cb); }, kNoService);
}

int64_t lceGetLastEstimationReport(LceEstimationReportCb cb) {
  const auto object = lce(__func__, __LINE__);
  if (!object) return kNoService;
  if (cb == nullptr) return kInvalidArguments;
  return guarded([&] { return object->getLastEstimationReport(cb); }, kNoService);
}

int64_t lcePerformReportingAction(LceReportingAction action) {
  const auto object = lce(__func__, __LINE__);
  if (!object) return kNoService;
  if (!ClientLceUtils::isReportingActionValid(action)) return kInvalidArguments;
  return guarded([&] { return object->performReportingAction(action); }, kNoService);
}

int64_t lceRegEstimationReports(LceEstimationReportCb cb) {
  const auto object = lce(__func__, __LINE__);
  if (!object) return kNoService;
  if (cb == nullptr) return kInvalidArguments;
  return object->regEstimationReports(cb);
}

}  // extern "C"
