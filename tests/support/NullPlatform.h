// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

// What a program may choose of its platform; before the log reads it, not while others log.
namespace nullplatform {

// The logging property, as the log reads it in its set-up; empty at first.
void setLogging(const char* value);
// Whether somebody takes diagnostic packets; at first nobody does.
void setListening(bool on);

}  // namespace nullplatform
