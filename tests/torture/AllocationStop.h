// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <cstddef>
#include <functional>
#include <utility>

namespace torture {

// Stops a call of the library between two of its steps, at an allocation. CMake calls
// orb_hook_allocations() for a program that contains AllocationStop.cpp. Belongs to the thread that
// creates it.
class AllocationStop {
 public:
  // While it exists, this thread runs @p action before its allocation number @p number, from 1.
  AllocationStop(size_t number, std::function<void()> action);
  AllocationStop(const AllocationStop&) = delete;
  AllocationStop& operator=(const AllocationStop&) = delete;
  ~AllocationStop();

  // Whether that allocation was made.
  bool reached() const { return mLeft == 0; }

  // While it exists, this thread's allocations are not counted. For the allocations of callbacks.
  class Pause {
   public:
    Pause();
    Pause(const Pause&) = delete;
    Pause& operator=(const Pause&) = delete;
    ~Pause();

   private:
    AllocationStop* const mPaused;
  };

  // Called before each allocation.
  static void allocating();

 private:
  size_t mLeft;
  const std::function<void()> mAction;
};

}  // namespace torture
