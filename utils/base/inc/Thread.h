// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <functional>
#include <new>
#include <thread>
#include <utility>

namespace orb::utils {

// startThread() for a body that is ready.
bool startThreadWith(std::thread& out, const char* name, std::function<void()> body);

}  // namespace orb::utils

// Whether startThread() has started the calling thread.
bool isLibraryThread();

// From now on new threads let SIGUSR1 through: the library has a handler for it.
void letThreadsTakeUserSignal();

// Starts a library thread: named (15 characters at most), with every signal blocked except the
// synchronous ones, so that no handler of the application runs on it, what the application waits
// for with sigwait() or a signalfd stays its own, and a closed socket cannot raise SIGPIPE there.
// An exception that reaches the end of @p body is logged and swallowed. Returns false, with @p out
// untouched, when the system has no thread or no memory to give; it never throws.
template <class Body>
bool startThread(std::thread& out, const char* name, Body&& body) {
  try {
    return orb::utils::startThreadWith(out, name, std::forward<Body>(body));
  } catch (const std::bad_alloc&) {
    return false;
  }
}
