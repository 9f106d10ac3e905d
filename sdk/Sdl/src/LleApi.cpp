// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
// The exported LLE functions: argument checks around the service object.
#include <orb/lle.h>

#include "Lle.h"
#include "ServiceApi.h"

extern "C" {

int orb_lle_enable(LleStatusIndCb cb) { return serviceApi::enable(Lle::kTable, cb); }

int orb_lle_disable(void) { return serviceApi::disable(Lle::kTable); }

int createLleClient(LleStatusV2Cb cb) { return serviceApi::create(Lle::kTable, cb); }

int destroyLleClient(void) { return serviceApi::destroy(Lle::kTable); }

int64_t lleSetReportingCriteria(uint32_t criteria) {
  return serviceApi::request<Lle>(Lle::kSetReportingCriteria, true,
                                  [&](Lle& lle) { return lle.setReportingCriteria(criteria); });
}

int64_t lleGetLastEstimationReport(LleEstimationReportCb cb) {
  static constexpr RequestPoints kRefusals =
      requestPoints(Lle::kSource, __func__, __LINE__, __LINE__);
  return serviceApi::request<Lle>(kRefusals, cb != nullptr,
                                  [&](Lle& lle) { return lle.getLastEstimationReport(cb); });
}

int64_t lleRegEstimationReports(LleEstimationReportCb cb) {
  static constexpr RequestPoints kRefusals =
      requestPoints(Lle::kSource, __func__, __LINE__, __LINE__);
  return serviceApi::request<Lle>(kRefusals, cb != nullptr,
                                  [&](Lle& lle) { return lle.regEstimationReports(cb); });
}

}  // extern "C"
