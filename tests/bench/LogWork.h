// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

// What benchmarks have the log do, on a platform that formats its lines and drops them. On the main
// thread.
namespace logwork {

// Sets the log up again: with this logging property, and with somebody who takes packets or not.
void setUpAgain(const char* logging, bool listening);
// From the next set-up on, records are encrypted. False when the configuration cannot be written:
// this needs scripts/sandbox.
bool configureEncryption();

}  // namespace logwork
