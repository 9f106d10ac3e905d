// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
//
// malloc and calloc. Not in builds with a sanitizer, see CMakeLists.txt.
#include <cerrno>
#include <cstdint>
#include <cstring>

#include "Memory.h"

namespace {

using MallocFunction = void* (*)(size_t);
using CallocFunction = void* (*)(size_t, size_t);
using FreeFunction = void (*)(void*);

// The look-up of the original functions may itself allocate. That memory comes from here and is
// never freed.
alignas(16) unsigned char early[4096];
size_t earlyUsed = 0;

bool isEarly(const void* memory) {
  const auto* const byte = static_cast<const unsigned char*>(memory);
  return byte >= early && byte < early + sizeof early;
}

void* takeEarly(size_t size) {
  const size_t rounded = (size + 15) / 16 * 16;
  if (rounded > sizeof early - earlyUsed) return nullptr;
  void* const memory = early + earlyUsed;
  earlyUsed += rounded;
  return memory;
}

struct Real {
  MallocFunction malloc = nullptr;
  CallocFunction calloc = nullptr;
  FreeFunction free = nullptr;
};
Real real;
bool resolving = false;

// Runs before main, while there is one thread. False during the look-up itself.
bool resolved() {
  if (real.free != nullptr) return true;
  if (resolving) return false;
  resolving = true;
  real.malloc = interposed::next<decltype(::malloc)>("malloc");
  real.calloc = interposed::next<decltype(::calloc)>("calloc");
  real.free = interposed::next<decltype(::free)>("free");
  resolving = false;
  return true;
}

bool fails(failcalls::Call call, const void* caller) {
  if (failcalls::decide(call, caller, true) == nullptr) return false;
  errno = ENOMEM;
  return true;
}

}  // namespace

void* failcalls::uncountedMalloc(size_t size) {
  return resolved() ? real.malloc(size) : takeEarly(size);
}

extern "C" {

void* orbTestMalloc(size_t size) __asm__("malloc");
void* orbTestMalloc(size_t size) {
  if (!resolved()) return takeEarly(size);
  if (fails(failcalls::Call::Malloc, __builtin_return_address(0))) return nullptr;
  return real.malloc(size);
}

void* orbTestCalloc(size_t count, size_t size) __asm__("calloc");
void* orbTestCalloc(size_t count, size_t size) {
  if (!resolved()) return takeEarly(count * size);
  if (fails(failcalls::Call::Calloc, __builtin_return_address(0))) return nullptr;
  return real.calloc(count, size);
}

void orbTestFree(void* memory) __asm__("free");
void orbTestFree(void* memory) {
  if (isEarly(memory)) return;
  if (resolved()) real.free(memory);
}

}  // extern "C"
