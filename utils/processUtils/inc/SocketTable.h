// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include "IpcReceiver.h"
#include "ProcessUtils.h"

// What the sources of ProcessUtils share.

// Registers @p socket under @p key and starts its receiver. False, with a log line, if the pair is
// in use or there is no thread. @p displaced gets the socket that had the pair before, to be
// released after the lock.
bool registerLocked(ProcessUtilsGlobals& globals, const ProcessUtilsGlobals::Key& key,
                    SharedSocket socket, HandlerRef handler, SharedSocket& displaced)
    ORB_REQUIRES(globals.mLock);
bool registerSocket(unsigned long id, unsigned int sessionId, SharedSocket socket,
                    HandlerRef handler);

// The last step of sendIpc().
bool sendWhole(const ipcMsg_t& msg, const IpcSocket& socket, int flags);
