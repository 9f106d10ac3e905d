// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

// Settings of the platform. A program changes them before the log reads them, and not while other
// threads log.
namespace nullplatform {

// The value of the logging property, which the log reads during its set-up; empty at first.
void setLogging(const char* value);
// Whether a client of the diagnostic channel takes packets; false at first.
void setListening(bool on);

}  // namespace nullplatform
