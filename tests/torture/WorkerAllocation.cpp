// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "WorkerAllocation.h"

#include <pthread.h>

#include <cstring>

#include "AllocationHook.h"

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

bool memory::mayAllocate(size_t size, const void*) {
  torture::WorkerAllocation::look(size);
  return true;
}
