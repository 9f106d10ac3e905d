// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "Process.h"

#include <pthread.h>
#include <unistd.h>

namespace {

// Number of forks from the process that loaded the library to this one. A process id alone is not
// enough: the system may reuse it, also in another namespace.
std::atomic<uint32_t> generation{1};
const int kRegistered = pthread_atfork(nullptr, nullptr, [] { ++generation; });

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
  return static_cast<uint64_t>(generation.load()) << 32 | static_cast<uint32_t>(getpid());
}

bool ProcessMark::isForked() const {
  const uint64_t process = mProcess.load(std::memory_order_relaxed);
  return process != 0 && process >> 32 != generation.load(std::memory_order_relaxed);
}
