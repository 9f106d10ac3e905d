// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <cstddef>
#include <cstdint>

#include "Fault.h"
#include "Interposed.h"

// The program defines the calls itself, so that everybody's end here first: those that the shared
// library makes are counted and may be made to fail, everybody else's go straight on. Any thread.
namespace failcalls {

// From now on the library's calls are counted in @p probe, from 1 on, and the fault happens. With
// the default fault they are counted only. Both are to be called while nobody else does.
void arm(const Fault& fault, Probe& probe);
// Safe while the library's threads run: no call fails after the return but those under way.
void disarm();

// Where connect() finds the daemon instead of the fixed path, so that several runs
// can go on side by side. Null: where it always is.
void redirectTo(const char* socketPath);

// For the definitions of the calls.

// What to do with a call that returns to @p caller: null for making it. With @p through, calls that
// the library makes through other libraries count as its own. @p size is that of a transfer.
const Failure* decide(Call call, const void* caller, bool through = false, size_t size = SIZE_MAX);
// Writes down the library's frames below the caller.
void note(Stack& stack);
// Whether @p address lies in the shared library.
bool inLibrary(uintptr_t address);
// The library's file and the offset in it of an address that lies in it.
const char* libraryFile();
uintptr_t libraryOffset(uintptr_t address);

}  // namespace failcalls
