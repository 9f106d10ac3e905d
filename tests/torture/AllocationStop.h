// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <cstddef>
#include <functional>
#include <utility>

namespace torture {

// Stops a call of the library in the midst of its steps, at an allocation. Programs that take its
// source call orb_hook_allocations(). Belongs to the thread that makes it.
class AllocationStop {
 public:
  // While it lives, this thread's allocation number @p number, from 1, runs @p action first.
  AllocationStop(size_t number, std::function<void()> action);
  AllocationStop(const AllocationStop&) = delete;
  AllocationStop& operator=(const AllocationStop&) = delete;
  ~AllocationStop();

  // Whether that allocation was made.
  bool reached() const { return mLeft == 0; }

  // While it lives, this thread's allocations do not count: a callback's, of whom it calls back.
  class Pause {
   public:
    Pause();
    Pause(const Pause&) = delete;
    Pause& operator=(const Pause&) = delete;
    ~Pause();

   private:
    AllocationStop* const mPaused;
  };

  // What each allocation tells.
  static void allocating();

 private:
  size_t mLeft;
  const std::function<void()> mAction;
};

}  // namespace torture
