// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

// The work of the log in benchmarks, on a platform that formats its lines and drops them. Used on
// the main thread.
namespace logwork {

// Sets the log up again, with this logging property, and with or without a client that takes
// packets.
void setUpAgain(const char* logging, bool listening);
// From the next set-up on, records are encrypted. False if the configuration cannot be written;
// this needs scripts/sandbox.
bool configureEncryption();

}  // namespace logwork
