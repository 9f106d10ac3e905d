// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <functional>

namespace orbtool {

// Exit statuses of all tools. A tool can have more.
constexpr int kExitDone = 0;
constexpr int kExitFailed = 1;
constexpr int kExitUsage = 2;

// Runs the main function of a tool and returns the status of the program. An exception becomes a
// message and status 1. Output that cannot be written completely also gives status 1. If the reader
// of the output exits, SIGPIPE ends the program, as usual; a tool that must continue ignores the
// signal.
int runTool(const char* name, const std::function<int()>& body);

// For a tool that has already reported that its output could not be written: runTool does not
// report it again.
void outputFailureIsTold();

}  // namespace orbtool
