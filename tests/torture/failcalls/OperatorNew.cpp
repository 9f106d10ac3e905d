// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
//
// The operator new that all others call (those for arrays and those without exceptions). Its memory
// comes from the original malloc.
#include <cstdlib>
#include <new>

#include "Memory.h"

void* operator new(std::size_t size) {
  if (failcalls::decide(failcalls::Call::OperatorNew, __builtin_return_address(0), true) !=
      nullptr) {
    throw std::bad_alloc();
  }
  void* const memory = failcalls::uncountedMalloc(size != 0 ? size : 1);
  if (memory == nullptr) throw std::bad_alloc();
  return memory;
}

void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
