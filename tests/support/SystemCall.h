// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <unistd.h>

#include <atomic>
#include <cstdarg>

#include "Interposed.h"

// For a program that defines syscall() itself: makes the call with the original definition. No
// system call has more than six arguments; the kernel ignores those that the caller did not pass.
// The definition is not looked up in a guarded static, because its guard may wait by syscall().
inline long nextSystemCall(long number, va_list arguments) {
  long values[6];
  for (long& value : values) value = va_arg(arguments, long);
  static std::atomic<decltype(::syscall)*> known{nullptr};
  auto* next = known.load();
  if (next == nullptr) known = next = interposed::next<decltype(::syscall)>("syscall");
  return next(number, values[0], values[1], values[2], values[3], values[4], values[5]);
}
