// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <pthread.h>

#include <functional>
#include <new>
#include <utility>

#include "ThreadStack.h"

// A thread of the library, or none yet: like std::thread, but with a chosen stack size. It belongs
// to the code that starts it, which uses it on one thread at a time. As with std::thread, a started
// one must be joined or detached before it is destroyed.
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

// From now on new threads do not block SIGUSR1: the library has a handler for it.
void letThreadsTakeUserSignal();

// Starts a library thread: with a name (15 characters at most) and a stack for @p work. It blocks
// every signal except the synchronous ones. So no handler of the application runs on it, signals
// that the application waits for with sigwait() or a signalfd reach the application, and a closed
// socket raises no SIGPIPE. An exception that leaves @p body is logged and goes no further. Returns
// false, with @p out unchanged, if the system has no thread or no memory; never throws.
template <class Body>
bool startThread(Thread& out, const char* name, ThreadWork work, Body&& body) {
  try {
    return out.start(name, work, std::forward<Body>(body));
  } catch (const std::bad_alloc&) {
    return false;
  }
}
