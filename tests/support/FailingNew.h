// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <cstddef>

// Allocations that fail, in the test program and in the libraries that it loads. A program that
// needs this contains FailingNew.cpp, and CMake calls orb_hook_allocations() for it. Allocations of
// the recording platform never fail and are not counted, because a real platform is not written in
// C++.
namespace memory {

// Whose allocations are counted and may fail.
enum class Caller {
  Anybody,
  Library  // only calls in the shared library itself, not in a library that it uses
};

// While it exists, allocation number @p nth from now on, counted from 0, fails once. It is an
// allocation of this thread or, with a name, of a thread that has that name at that time. One
// object of each kind may exist at a time; this thread's must be destroyed on this thread.
class FailingNew {
 public:
  explicit FailingNew(size_t nth, Caller caller = Caller::Anybody, const char* thread = nullptr);
  FailingNew(const FailingNew&) = delete;
  FailingNew& operator=(const FailingNew&) = delete;
  ~FailingNew();

  // Whether the allocation has failed.
  bool failed() const;

 private:
  const bool mNamed;
};

// While it exists, every allocation of this thread fails.
class NoMemory {
 public:
  NoMemory();
  NoMemory(const NoMemory&) = delete;
  NoMemory& operator=(const NoMemory&) = delete;
  ~NoMemory();
};

// Makes @p attempt while this thread's first allocation fails, then its second, until there are no
// more. @p check(nth) checks the state after each failure. In the last attempt no allocation
// failed. Returns the number of failed attempts.
template <class Attempt, class Check>
size_t failEach(Caller caller, const Attempt& attempt, const Check& check) {
  for (size_t nth = 0;; ++nth) {
    bool failed = false;
    {
      const FailingNew failing(nth, caller);
      attempt();
      failed = failing.failed();
    }
    if (!failed) return nth;
    check(nth);
  }
}

}  // namespace memory
