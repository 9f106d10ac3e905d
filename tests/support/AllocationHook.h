// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <cstddef>

// The allocations of a test program and of what it loads. AllocationHook.cpp replaces operator new
// in all its forms, or the malloc below it in a program that uses a shared library with a C++
// runtime of its own inside (ORB_HOOK_MALLOC). orb_hook_allocations() in CMake makes it a source of
// the program.
namespace memory {

// Defined by whoever wants to know: called before each allocation, with the place of the call. The
// allocation fails unless it is true. May itself allocate, if it can stand being called for that.
bool mayAllocate(size_t size, const void* caller);

}  // namespace memory
