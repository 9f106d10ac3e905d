// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <cstddef>

#include "IpcFrame.h"
#include "SdkClientEvent.h"

constexpr char kSdkClientTag[] = "OrbSdk";

// The endpoint through which a client type talks to the daemon. Types without an endpoint of their
// own share the last.
ProcessId endpointOf(OrbSdkClientType type);

// Endpoints are numbered without a gap.
constexpr size_t kSdkClientEndpoints =
    static_cast<size_t>(ProcessId::Other) - static_cast<size_t>(ProcessId::Client101) + 1;
constexpr size_t endpointIndex(ProcessId endpoint) {
  return static_cast<size_t>(endpoint) - static_cast<size_t>(ProcessId::Client101);
}
