// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

#include "orbsim/Service.h"

#include "orbsim/LceService.h"
#include "orbsim/LleService.h"
#include "orbsim/LliService.h"

namespace orbsim {

const char* serviceName(uint32_t sdkType) {
  switch (sdkType) {
    case kSdkTypeLce:
      return "lce";
    case kSdkTypeLle:
      return "lle";
    case kSdkTypeLli:
      return "lli";
    default:
      return "unknown";
  }
}

std::unique_ptr<Service> makeService(uint32_t sdkType, Session& session, Control& control) {
  switch (sdkType) {
    case kSdkTypeLce:
      return std::make_unique<LceService>(session, control);
    case kSdkTypeLle:
      return std::make_unique<LleService>(session, control);
    case kSdkTypeLli:
      return std::make_unique<LliService>(session, control);
    default:
      return nullptr;
  }
}

}  // namespace orbsim
