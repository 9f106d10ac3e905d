// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
// A separate source file, so that no compiler can inline the replaced functions.
#include "AllocationHook.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <new>

#include "Interposed.h"

namespace {

// New memory is filled with this byte, so that uninitialised memory is not zero.
constexpr int kGarbage = 0xA5;

using Malloc = void* (*)(size_t);

void* allocate(size_t size, const void* caller, Malloc real) {
  if (!memory::mayAllocate(size, caller)) {
    errno = ENOMEM;
    return nullptr;
  }
  void* const memory = real(size);
  if (memory != nullptr) memset(memory, kGarbage, size);
  return memory;
}

}  // namespace

#ifdef ORB_HOOK_MALLOC

// All operators new call this, also those of each library.
extern "C" void* malloc(size_t size) {
  return allocate(size, __builtin_return_address(0), ORB_NEXT(malloc));
}

#else

namespace {

void* allocateOrThrow(size_t size, const void* caller) {
  void* const memory = allocate(size != 0 ? size : 1, caller, malloc);
  if (memory == nullptr) throw std::bad_alloc();
  return memory;
}

}  // namespace

void* operator new(size_t size) { return allocateOrThrow(size, __builtin_return_address(0)); }
void* operator new[](size_t size) { return allocateOrThrow(size, __builtin_return_address(0)); }
void* operator new(size_t size, const std::nothrow_t&) noexcept {
  return allocate(size != 0 ? size : 1, __builtin_return_address(0), malloc);
}
void* operator new[](size_t size, const std::nothrow_t&) noexcept {
  return allocate(size != 0 ? size : 1, __builtin_return_address(0), malloc);
}
void operator delete(void* memory) noexcept { free(memory); }
void operator delete[](void* memory) noexcept { free(memory); }
void operator delete(void* memory, size_t) noexcept { free(memory); }
void operator delete[](void* memory, size_t) noexcept { free(memory); }
void operator delete(void* memory, const std::nothrow_t&) noexcept { free(memory); }
void operator delete[](void* memory, const std::nothrow_t&) noexcept { free(memory); }

#endif
