// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

// The documented end of the process where the library cannot go on: the line at error priority,
// then exit(-1). exit() is not for two threads at once, so of several that stop only the first one
// ends the process, and the others wait for that.
[[noreturn]] void hardStop(const char* message);
