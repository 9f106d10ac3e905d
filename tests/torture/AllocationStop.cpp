// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
// A source of its own, so that no compiler sees through the replaced operators.
#include "AllocationStop.h"

#include <cstdlib>
#include <new>

namespace torture {
namespace {

thread_local AllocationStop* tStop = nullptr;

}  // namespace

AllocationStop::AllocationStop(size_t number, std::function<void()> action)
    : mLeft(number), mAction(std::move(action)) {
  tStop = this;
}

AllocationStop::~AllocationStop() { tStop = nullptr; }

AllocationStop::Pause::Pause() : mPaused(tStop) { tStop = nullptr; }
AllocationStop::Pause::~Pause() { tStop = mPaused; }

void AllocationStop::allocating() {
  if (tStop != nullptr && tStop->mLeft > 0 && --tStop->mLeft == 0) tStop->mAction();
}

}  // namespace torture

void* operator new(size_t size) {
  torture::AllocationStop::allocating();
  if (void* const memory = malloc(size > 0 ? size : 1)) return memory;
  throw std::bad_alloc();
}
void* operator new[](size_t size) { return operator new(size); }
void* operator new(size_t size, const std::nothrow_t&) noexcept {
  torture::AllocationStop::allocating();
  return malloc(size > 0 ? size : 1);
}
void* operator new[](size_t size, const std::nothrow_t& none) noexcept {
  return operator new(size, none);
}
void operator delete(void* memory) noexcept { free(memory); }
void operator delete[](void* memory) noexcept { free(memory); }
void operator delete(void* memory, size_t) noexcept { free(memory); }
void operator delete[](void* memory, size_t) noexcept { free(memory); }
void operator delete(void* memory, const std::nothrow_t&) noexcept { free(memory); }
void operator delete[](void* memory, const std::nothrow_t&) noexcept { free(memory); }
