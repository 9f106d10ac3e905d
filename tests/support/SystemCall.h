// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <unistd.h>

#include <cstdarg>

#include "Interposed.h"

// For a program that defines syscall() itself: makes the call with the original definition. No
// system call has more than six arguments; what the caller did not pass is not looked at.
inline long nextSystemCall(long number, va_list arguments) {
  long values[6];
  for (long& value : values) value = va_arg(arguments, long);
  return ORB_NEXT(syscall)(number, values[0], values[1], values[2], values[3], values[4],
                           values[5]);
}
