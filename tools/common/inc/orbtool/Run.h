// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <functional>

namespace orbtool {

// Exit statuses of all tools. Others are the tool's own.
constexpr int kExitDone = 0;
constexpr int kExitFailed = 1;
constexpr int kExitUsage = 2;

// Runs a tool's main function: its status is the program's. Whatever it throws becomes a message
// and status 1, and so does output that could not be written whole. A reader of the output that
// goes away ends the program by SIGPIPE, as it does others: a tool that must live on ignores the
// signal.
int runTool(const char* name, const std::function<int()>& body);

// For a tool that has found itself, and says, that its output could not be written: runTool does
// not say so again.
void outputFailureIsTold();

}  // namespace orbtool
