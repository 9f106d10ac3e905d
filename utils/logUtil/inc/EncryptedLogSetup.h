// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <string>

#include "EncryptedLog.h"
#include "UniqueFd.h"

// The set-up of the encrypted log: its configuration file, and the keys of one run. On the thread
// that sets the log up, without a lock; what there is to say goes to the log, so the caller holds
// no lock of that. Both throw std::bad_alloc.

// The configuration file; none when it cannot be opened, and then there is no encrypted log.
UniqueFd openLogConfig();
// Takes all of the settings that the file decides. False when it gives no key to wrap with.
bool readLogConfig(int fd, EncryptedLog::Settings& settings);
// The keys for this public key; false when they cannot be made, and then both are empty.
bool makeLogKeys(std::string publicKeyPem, EncryptedLog::Settings& settings);
