// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
// The exported LCE functions: argument checks around the service object.
#include <orb/lce.h>

#include "ClientLceUtils.h"
#include "Lce.h"
#include "ServiceApi.h"

namespace {

constexpr uint8_t kListMax = LCE_REPORTING_CRITERIA_LIST_MAX;

bool isValid(const LceReportingCriteria& criteria) {
  return ClientLceUtils::isAccessNwTypeValid(criteria.accessNetworkType) &&
         criteria.firstListCount <= kListMax && criteria.secondListCount <= kListMax;
}

}  // namespace

extern "C" {

int orb_lce_enable(LceStatusIndCb cb) { return serviceApi::enable(Lce::kTable, cb); }

int orb_lce_disable(void) { return serviceApi::disable(Lce::kTable); }

int createLceClient(LceStatusV2Cb cb) { return serviceApi::create(Lce::kTable, cb); }

int destroySdfClient(void) { return serviceApi::destroy(Lce::kTable); }

int64_t lceSetReportingCriteria(const LceReportingCriteria* criteria, LceReportingCriteriaCb cb) {
  static constexpr RequestPoints kRefusals =
      requestPoints(Lce::kSource, __func__, __LINE__, __LINE__);
  return serviceApi::request<Lce>(kRefusals, cb != nullptr && criteria != nullptr, [&](Lce& lce) {
    const LceReportingCriteria read = *criteria;  // once: what is sent is what was checked
    return isValid(read) ? lce.setReportingCriteria(read, cb) : kInvalidArguments;
  });
}

int64_t lceGetLastEstimationReport(LceEstimationReportCb cb) {
  static constexpr RequestPoints kRefusals =
      requestPoints(Lce::kSource, __func__, __LINE__, __LINE__);
  return serviceApi::request<Lce>(kRefusals, cb != nullptr,
                                  [&](Lce& lce) { return lce.getLastEstimationReport(cb); });
}

int64_t lcePerformReportingAction(LceReportingAction action) {
  static constexpr RequestPoints kRefusals =
      requestPoints(Lce::kSource, __func__, __LINE__, __LINE__);
  return serviceApi::request<Lce>(kRefusals, ClientLceUtils::isReportingActionValid(action),
                                  [&](Lce& lce) { return lce.performReportingAction(action); });
}

int64_t lceRegEstimationReports(LceEstimationReportCb cb) {
  static constexpr RequestPoints kRefusals =
      requestPoints(Lce::kSource, __func__, __LINE__, __LINE__);
  return serviceApi::request<Lce>(kRefusals, cb != nullptr,
                                  [&](Lce& lce) { return lce.regEstimationReports(cb); });
}

}  // extern "C"
