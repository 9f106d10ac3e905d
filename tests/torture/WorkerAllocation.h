// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <atomic>
#include <cstddef>
#include <functional>

// Stops the library's worker at one place: between its look at the connection and the send, where
// it makes the message that carries the blob. Programs that take its source call
// orb_hook_allocations().
namespace torture {

// While it lives, the worker runs @p action first when it makes its next message.
class WorkerAllocation {
 public:
  explicit WorkerAllocation(std::function<void()> action);
  WorkerAllocation(const WorkerAllocation&) = delete;
  WorkerAllocation& operator=(const WorkerAllocation&) = delete;
  ~WorkerAllocation() { sSize.store(0); }

  // Before each allocation.
  static void look(size_t size, const void* caller);

 private:
  static std::atomic<size_t> sSize;
  static std::function<void()> sAction;
};

}  // namespace torture
