// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
// A source of its own, so that no compiler sees through the replaced operators.
#include "WorkerAllocation.h"

#include <pthread.h>

#include <cstdlib>
#include <cstring>
#include <new>

namespace torture {

std::atomic<size_t> WorkerAllocation::sSize{0};
std::function<void()> WorkerAllocation::sAction;

void* WorkerAllocation::allocate(size_t size) {
  if (size != 0 && size == sSize.load(std::memory_order_relaxed)) look(size);
  return malloc(size != 0 ? size : 1);
}

void WorkerAllocation::look(size_t size) {
  char name[16] = "";
  pthread_getname_np(pthread_self(), name, sizeof(name));
  if (strcmp(name, "orb-sdk") == 0 && sSize.compare_exchange_strong(size, 0)) sAction();
}

}  // namespace torture

void* operator new(size_t size) {
  void* const memory = torture::WorkerAllocation::allocate(size);
  if (memory == nullptr) throw std::bad_alloc();
  return memory;
}
void* operator new[](size_t size) { return operator new(size); }
void* operator new(size_t size, const std::nothrow_t&) noexcept {
  return torture::WorkerAllocation::allocate(size);
}
void* operator new[](size_t size, const std::nothrow_t&) noexcept {
  return torture::WorkerAllocation::allocate(size);
}
void operator delete(void* memory) noexcept { free(memory); }
void operator delete[](void* memory) noexcept { free(memory); }
void operator delete(void* memory, size_t) noexcept { free(memory); }
void operator delete[](void* memory, size_t) noexcept { free(memory); }
void operator delete(void* memory, const std::nothrow_t&) noexcept { free(memory); }
void operator delete[](void* memory, const std::nothrow_t&) noexcept { free(memory); }
