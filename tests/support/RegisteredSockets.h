// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include "ProcessUtils.h"

namespace processstate {

// Whether the library's IPC still has a registered socket or a receiver thread.
inline bool socketsRegistered() {
  const auto globals = getProcessUtilsGlobals();
  const ScopedLock<SharedMutex> lock(globals->mLock);
  return !globals->mSockets.empty() || !globals->mReceiverThreads.empty();
}

}  // namespace processstate
