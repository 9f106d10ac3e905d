// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
// The exported LLI functions: argument checks around the service object.
#include <orb/lli.h>

#include "Lli.h"
#include "ServiceApi.h"

extern "C" {

int orb_lli_enable(LliStatusIndCb cb) { return serviceApi::enable(Lli::kTable, cb); }

int orb_lli_disable(void) { return serviceApi::disable(Lli::kTable); }

int createLliClient(LliStatusV2Cb cb) { return serviceApi::create(Lli::kTable, cb); }

int destroyLliClient(void) { return serviceApi::destroy(Lli::kTable); }

int64_t lliRegLinkInterruptInd(LliLinkInterruptIndCb cb) {
  return serviceApi::request<Lli>(Lli::kRegLinkInterruptInd, cb != nullptr,
                                  [&](Lli& lli) { return lli.regLinkInterruptInd(cb); });
}

}  // extern "C"
