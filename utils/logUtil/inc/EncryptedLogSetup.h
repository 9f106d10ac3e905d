// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <string>

#include "EncryptedLog.h"
#include "UniqueFd.h"

// The set-up of the encrypted log: its configuration file, and the keys of one run. Called on the
// thread that sets the log up, without a lock of the log: these functions write lines to the log.
// The last two throw std::bad_alloc.

// Opens the configuration file. If it cannot be opened, there is no encrypted log.
UniqueFd openLogConfig();
// Reads the file's settings, and makes the keys. False without a public key that can be used.
bool readLogConfig(int fd, EncryptedLog::Settings& settings);
// Makes the keys for this public key. False if that fails; then both are empty.
bool makeLogKeys(std::string publicKeyPem, EncryptedLog::Settings& settings);
