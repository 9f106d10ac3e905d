// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "Process.h"

#include <pthread.h>
#include <sys/mman.h>
#include <unistd.h>

#include <new>

namespace {

// What currentProcess() has found out, or 0: in memory that the kernel empties in every child that
// gets a copy of it, also in one made without fork handlers. Null if there is no such memory.
using KnownProcess = std::atomic<uint64_t>;
KnownProcess* makeKnownProcess() {
#ifdef MADV_WIPEONFORK  // headers of older C libraries lack it
  void* const memory = mmap(nullptr, sizeof(KnownProcess), PROT_READ | PROT_WRITE,
                            MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (memory == MAP_FAILED) return nullptr;
  // An emulator may accept any advice and do nothing: one that refuses none is not relied on.
  if (madvise(memory, sizeof(KnownProcess), -1) != 0 &&
      madvise(memory, sizeof(KnownProcess), MADV_WIPEONFORK) == 0) {
    return new (memory) KnownProcess(0);
  }
  munmap(memory, sizeof(KnownProcess));
#endif
  return nullptr;
}
KnownProcess* const knownProcess = makeKnownProcess();

// Number of forks from the process that loaded the library to this one. A process id alone is not
// enough: the system may reuse it, also in another namespace.
std::atomic<uint32_t> generation{1};
const int kRegistered = pthread_atfork(nullptr, nullptr, [] {
  ++generation;
  if (knownProcess != nullptr) *knownProcess = 0;  // of a handler before this one
});

// What this thread has asked for, and in which generation; in none at first. In this file alone: a
// thread's variable with a name that others may have is reached through symbols that the
// application's could take the place of.
struct KnownThread {
  uint32_t generation;
  ThreadIds ids;
};
thread_local KnownThread known = {};

}  // namespace

ThreadIds currentThread() {
  const uint32_t present = generation.load(std::memory_order_relaxed);
  if (known.generation != present) known = {present, {getpid(), gettid()}};
  return known.ids;
}

// The number counts as well, for children made without fork handlers.
uint64_t currentProcess() {
  uint64_t process = knownProcess != nullptr ? knownProcess->load() : 0;
  if (process != 0) return process;
  process = static_cast<uint64_t>(generation.load()) << 32 | static_cast<uint32_t>(getpid());
  if (knownProcess != nullptr) *knownProcess = process;
  return process;
}

bool ProcessMark::isForked() const {
  const uint64_t process = mProcess.load(std::memory_order_relaxed);
  return process != 0 && process >> 32 != generation.load(std::memory_order_relaxed);
}
