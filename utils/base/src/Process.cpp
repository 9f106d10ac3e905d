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

}  // namespace

// The number counts as well, for children made without fork handlers.
uint64_t currentProcess() {
  return static_cast<uint64_t>(generation.load()) << 32 | static_cast<uint32_t>(getpid());
}

bool ProcessMark::isForked() const {
  const uint64_t process = mProcess.load(std::memory_order_relaxed);
  return process != 0 && process >> 32 != generation.load(std::memory_order_relaxed);
}
