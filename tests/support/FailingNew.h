// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <cstddef>

// Memory that runs out, for the test program and for what it loads. Programs that want this take
// FailingNew.cpp as one more source of theirs and call orb_hook_allocations(). What the recording
// platform allocates never fails and is not counted: a real platform is no C++.
namespace memory {

// Whose allocations are counted and may fail.
enum class Caller {
  Anybody,
  Library  // only those that stand in the shared library itself, not in one that it uses
};

// While it lives, the @p nth allocation from now on, counted from 0, fails; once. It is one of this
// thread, or, with a name, of whatever thread bears that name by then. One of each kind may live at
// a time; that of this thread must end on it.
class FailingNew {
 public:
  explicit FailingNew(size_t nth, Caller caller = Caller::Anybody, const char* thread = nullptr);
  FailingNew(const FailingNew&) = delete;
  FailingNew& operator=(const FailingNew&) = delete;
  ~FailingNew();

  // Whether it has happened.
  bool failed() const;

 private:
  const bool mNamed;
};

// While it lives, every allocation of this thread fails.
class NoMemory {
 public:
  NoMemory();
  NoMemory(const NoMemory&) = delete;
  NoMemory& operator=(const NoMemory&) = delete;
  ~NoMemory();
};

// Makes @p attempt with this thread's first allocation failing, then with its second, until there
// are no more; @p check(nth) looks at what each failure has left. The last attempt lacked nothing.
// Returns the number of those that failed.
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
