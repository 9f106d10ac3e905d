// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

// The documented end of the process where the library cannot go on: the line at error priority,
// then exit(-1). exit() is not for two threads at once, so of several that stop only the first one
// ends the process, and the others wait for that.
[[noreturn]] void hardStop(const char* message);

// The calling thread is in exit() already: no other one may call it any more.
void noteProcessExit();

// What other threads were about to do may never be done now. A wait for them that has no bound of
// its own looks here from time to time.
bool processStops();
