// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

// What the stand-ins read of the environment. They do so only while they are loaded, which in a
// program that is linked to them is before main(): from then on any thread of the program may
// change its environment, and to read it meanwhile is a fault.
namespace host {

// Null when there is no such variable, and in a program that runs with more rights than its user,
// who may not steer it.
inline const char* variable(const char* name) {
#ifdef ORB_HAS_SECURE_GETENV
  return secure_getenv(name);
#else
  return getenv(name);
#endif
}

// The same for a value that is needed later: a copy, which nobody frees, as threads may use it
// while the process exits.
inline const char* keptVariable(const char* name) {
  const char* const text = variable(name);
  return text != nullptr ? strdup(text) : nullptr;
}

// What a variable says cannot be meant: one line for the person who set it.
inline void refuse(const char* name, const char* value, const char* why) {
  (void)dprintf(STDERR_FILENO, "%s=%s: %s\n", name, value, why);
}

}  // namespace host
