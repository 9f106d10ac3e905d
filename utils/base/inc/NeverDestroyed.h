// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

// Holds a static object whose destructor never runs, so that threads may use it while the process
// exits. What threads may still use then stands in one of these, and nowhere else. With a constexpr
// default constructor T is there before any code runs, also outside functions; any other T is for a
// static variable of a function, which the first call builds. T needs no public constructor: it may
// name NeverDestroyed<T> its friend.
template <class T>
class NeverDestroyed {
 public:
  constexpr NeverDestroyed() : mValue() {}
  NeverDestroyed(const NeverDestroyed&) = delete;
  NeverDestroyed& operator=(const NeverDestroyed&) = delete;
  ~NeverDestroyed() {}

  T& get() { return mValue; }

 private:
  union {
    T mValue;
  };
};
