// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <atomic>
#include <cstdint>

// Names the calling process: another value in a child made by fork(), whatever numbers the system
// gives to processes, and in one made without fork handlers that has a copy of the memory. Never 0.
// Asks the system once for each process where the kernel can empty memory in children, else at each
// call. Async-signal-safe.
uint64_t currentProcess();

// The calling process and thread as the system numbers them, asked for once for each thread and
// anew in a forked child. A child made without fork handlers gets those of its parent.
struct ThreadIds {
  int process;
  long thread;
};
ThreadIds currentThread();

// Remembers the process that an object belongs to. A forked child has the memory and the
// descriptors of its parent, but none of its threads: locks may stay locked for ever there, and
// what it writes to a descriptor looks like data of the parent. Any thread; no lock.
class ProcessMark {
 public:
  constexpr ProcessMark() = default;

  // The calling process from now on.
  void set() { mProcess = currentProcess(); }
  // The same, unless a process was set before.
  void setOnce() {
    uint64_t none = 0;
    if (mProcess == 0) mProcess.compare_exchange_strong(none, currentProcess());
  }
  bool isSet() const { return mProcess != 0; }
  // Whether the process that was set is the calling one.
  bool isHere() const { return mProcess == currentProcess(); }
  // Whether a process was set and is not the calling one.
  bool isElsewhere() const { return isSet() && !isHere(); }
  // The same without a system call on every kernel, for frequent calls. It does not notice a child
  // that was made without fork handlers.
  bool isForked() const;

 private:
  std::atomic<uint64_t> mProcess{0};
};
