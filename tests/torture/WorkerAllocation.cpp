// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
// A source of its own, so that no compiler sees through the replaced functions.
#include "WorkerAllocation.h"

#include <dlfcn.h>
#include <pthread.h>

#include <cstdlib>
#include <cstring>
#include <new>

namespace torture {

std::atomic<size_t> WorkerAllocation::sSize{0};
std::function<void()> WorkerAllocation::sAction;

void WorkerAllocation::look(size_t size) {
  if (size == 0 || size != sSize.load(std::memory_order_relaxed)) return;
  char name[16] = "";
  pthread_getname_np(pthread_self(), name, sizeof(name));
  if (strcmp(name, "orb-sdk") == 0 && sSize.compare_exchange_strong(size, 0)) sAction();
}

}  // namespace torture

#ifdef ORB_STATIC_CXX_RUNTIME

// The library's operator new is its own there, but the malloc below that is everybody's.
extern "C" void* malloc(size_t size) {
  static const auto real = reinterpret_cast<void* (*)(size_t)>(dlsym(RTLD_NEXT, "malloc"));
  torture::WorkerAllocation::look(size);
  return real(size);
}

#else

namespace {

void* allocate(size_t size) {
  torture::WorkerAllocation::look(size);
  return malloc(size != 0 ? size : 1);
}

}  // namespace

void* operator new(size_t size) {
  void* const memory = allocate(size);
  if (memory == nullptr) throw std::bad_alloc();
  return memory;
}
void* operator new[](size_t size) { return operator new(size); }
void* operator new(size_t size, const std::nothrow_t&) noexcept { return allocate(size); }
void* operator new[](size_t size, const std::nothrow_t&) noexcept { return allocate(size); }
void operator delete(void* memory) noexcept { free(memory); }
void operator delete[](void* memory) noexcept { free(memory); }
void operator delete(void* memory, size_t) noexcept { free(memory); }
void operator delete[](void* memory, size_t) noexcept { free(memory); }
void operator delete(void* memory, const std::nothrow_t&) noexcept { free(memory); }
void operator delete[](void* memory, const std::nothrow_t&) noexcept { free(memory); }

#endif
