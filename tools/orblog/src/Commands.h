// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

// The commands of orblog. Each reads its own part of the command line, whose first word is the
// command, and returns the exit status.
namespace orblog {

constexpr int kExitDone = 0;
constexpr int kExitFailed = 1;  // something could not be read or written
constexpr int kExitUsage = 2;

int runDecrypt(int argc, char** argv);
int runInfo(int argc, char** argv);
int runKeygen(int argc, char** argv);

// One line that names what is wrong with the command line.
int refuse(const char* command, const char* format, ...) __attribute__((format(printf, 2, 3)));

}  // namespace orblog
