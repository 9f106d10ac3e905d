// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <cstddef>
#include <cstdint>

#include "Fault.h"
#include "Interposed.h"

// The program defines these functions itself, so all calls of the process come here first. Calls of
// the shared library are counted and may be made to fail; all others continue unchanged. Used by
// any thread.
namespace failcalls {

// From now on the library's calls are counted in @p probe, from 1, and the fault happens. With the
// default fault they are only counted. Call both while no other thread makes calls.
void arm(const Fault& fault, Probe& probe);
// May be called while the library's threads run. After the return only calls under way may fail.
void disarm();

// The path at which connect() finds the daemon in place of the fixed path, so that several runs can
// go on at the same time. Null: the fixed path.
void redirectTo(const char* socketPath);

// For the definitions of the calls.

// The failure of the call that returns to @p caller; null if the call is to be made. With @p
// through, calls that the library makes through other libraries count as its own. @p size is the
// size of a transfer.
const Failure* decide(Call call, const void* caller, bool through = false, size_t size = SIZE_MAX);
// Records the library's frames below the caller.
void note(Stack& stack);
// Whether @p address is in the shared library.
bool inLibrary(uintptr_t address);
// The library's file, and the offset in it of an address of the library.
const char* libraryFile();
uintptr_t libraryOffset(uintptr_t address);

}  // namespace failcalls
