// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <functional>
#include <thread>

// Starts a library thread: named (15 characters at most), with every signal blocked except the
// synchronous ones and SIGUSR1, so that no handler of the application runs on it and a closed
// socket cannot raise SIGPIPE there. An exception that reaches the end of @p body is logged and
// swallowed. Returns false, with @p out untouched, when the system has no thread to give.
bool startThread(std::thread& out, const char* name, std::function<void()> body);
