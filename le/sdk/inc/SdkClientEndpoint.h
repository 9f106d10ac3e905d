// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include "IpcFrame.h"
#include "SdkClientEvent.h"

constexpr char kSdkClientTag[] = "OrbSdk";

// The endpoint through which a client type talks to the daemon. Types without one of their own
// share the last.
ProcessId endpointOf(OrbSdkClientType type);
