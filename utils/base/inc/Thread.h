// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <pthread.h>

#include <functional>
#include <new>
#include <utility>

#include "ThreadStack.h"

// A thread of the library, or none yet: what std::thread would be if it could be told how large its
// stack is to be. Belongs to whoever has it started, who uses it on one thread at a time. As with
// std::thread, one that was started must be joined or detached before it goes.
class Thread {
 public:
  Thread() = default;
  Thread(Thread&& other) noexcept { swap(other); }
  Thread& operator=(Thread&& other) noexcept;
  ~Thread();

  // For startThread(), below.
  bool start(const char* name, ThreadWork work, std::function<void()> body);

  bool joinable() const { return mJoinable; }
  // Whether it is the calling thread.
  bool isHere() const { return mJoinable && pthread_equal(mId, pthread_self()) != 0; }
  void join();
  void detach();

 private:
  void swap(Thread& other) noexcept {
    std::swap(mId, other.mId);
    std::swap(mJoinable, other.mJoinable);
  }

  pthread_t mId{};  // meaningful while joinable
  bool mJoinable = false;
};

// Whether startThread() has started the calling thread.
bool isLibraryThread();

// From now on new threads let SIGUSR1 through: the library has a handler for it.
void letThreadsTakeUserSignal();

// Starts a library thread: named (15 characters at most), with a stack for @p work, and with every
// signal blocked except the synchronous ones, so that no handler of the application runs on it,
// what the application waits for with sigwait() or a signalfd stays its own, and a closed socket
// cannot raise SIGPIPE there. An exception that reaches the end of @p body is logged and swallowed.
// Returns false, with @p out untouched, when the system has no thread or no memory to give; it
// never throws.
template <class Body>
bool startThread(Thread& out, const char* name, ThreadWork work, Body&& body) {
  try {
    return out.start(name, work, std::forward<Body>(body));
  } catch (const std::bad_alloc&) {
    return false;
  }
}
