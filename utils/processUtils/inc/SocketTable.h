// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include "IpcReceiver.h"
#include "ProcessUtils.h"

// What the sources of ProcessUtils share.

// Notes @p socket under @p key and starts its receiver; false, with a line, when the pair is taken
// or there is no thread. @p displaced gets the socket that had the pair before, to be let go after
// the lock.
bool registerLocked(ProcessUtilsGlobals& globals, const ProcessUtilsGlobals::Key& key,
                    SharedSocket socket, HandlerRef handler, SharedSocket& displaced)
    ORB_REQUIRES(globals.mLock);
bool registerSocket(unsigned long id, unsigned int sessionId, SharedSocket socket,
                    HandlerRef handler);

// The last step of sendIpc().
bool sendWhole(const ipcMsg_t& msg, const IpcSocket& socket, int flags);
