// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "SdkClientEndpoint.h"

ProcessId endpointOf(OrbSdkClientType type) {
  switch (static_cast<uint32_t>(type)) {
    case 4:
      return ProcessId::Client101;
    case 5:
      return ProcessId::Client102;
    case 7:
      return ProcessId::Client104;
    case 9:
      return ProcessId::LCE;
    case 10:
      return ProcessId::LLE;
    case 11:
      return ProcessId::LLI;
    default:
      return ProcessId::Other;
  }
}
