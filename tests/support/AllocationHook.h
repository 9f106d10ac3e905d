// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <cstddef>

// The allocations of a test program and of the libraries that it loads. AllocationHook.cpp replaces
// operator new in all its forms. If the shared library contains its own C++ runtime, it replaces
// malloc instead (ORB_HOOK_MALLOC). orb_hook_allocations() in CMake adds it to a program.
namespace memory {

// The test program defines this. Called before each allocation, with the place of the call. If it
// returns false, the allocation fails. It may allocate, but is then called for that, too.
bool mayAllocate(size_t size, const void* caller);

}  // namespace memory
