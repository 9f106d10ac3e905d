// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <pthread.h>

#include <atomic>
#include <cerrno>
#include <functional>
#include <string>
#include <utility>

#include "Interposed.h"

// The program's own pthread_create(). It fails while the test demands that.
namespace threads {

inline std::atomic<bool> fail{false};
inline std::atomic<bool> failForWorker{false};  // only calls by the library's worker
inline std::function<void()> action;
inline std::atomic<bool> armed{false};

// The next thread that creates a thread runs this first, once.
inline void beforeNext(std::function<void()> first) {
  action = std::move(first);
  armed = true;
}
inline bool fails() {
  if (fail) return true;
  if (!failForWorker) return false;
  char name[16] = "";
  pthread_getname_np(pthread_self(), name, sizeof(name));
  return std::string(name) == "orb-sdk";
}
inline void forget() { fail = failForWorker = armed = false; }

}  // namespace threads

extern "C" int pthread_create(pthread_t* thread, const pthread_attr_t* attributes,
                              void* (*body)(void*), void* data) {
  if (threads::armed.exchange(false)) std::exchange(threads::action, nullptr)();
  return threads::fails() ? EAGAIN : ORB_NEXT(pthread_create)(thread, attributes, body, data);
}
