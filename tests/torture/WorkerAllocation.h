// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <atomic>
#include <cstddef>
#include <functional>

// Stops the library's worker at one place: after it has checked the connection and before it sends,
// where it creates the message that carries the blob. CMake calls orb_hook_allocations() for a
// program that contains WorkerAllocation.cpp.
namespace torture {

// While it exists, the worker runs @p action before it creates its next message.
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
