// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <atomic>
#include <cstddef>
#include <functional>

// Stops the library's worker at one place: between its look at the connection and the send, where
// it copies the blob that is to be sent. Programs that take its source call orb_hook_allocations().
namespace torture {

// While it lives, the worker's next allocation of @p size bytes runs @p action first.
class WorkerAllocation {
 public:
  WorkerAllocation(size_t size, std::function<void()> action) {
    sAction = std::move(action);
    sSize.store(size);
  }
  WorkerAllocation(const WorkerAllocation&) = delete;
  WorkerAllocation& operator=(const WorkerAllocation&) = delete;
  ~WorkerAllocation() { sSize.store(0); }

  // Before each allocation.
  static void look(size_t size);

 private:
  static std::atomic<size_t> sSize;
  static std::function<void()> sAction;
};

}  // namespace torture
