// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

// Holds a static object whose destructor never runs, so that threads may use it while the process
// exits. Every object that threads may still use then is in one of these. If T has a constexpr
// default constructor, the object exists before any code runs, also outside functions. Any other T
// is for a static variable of a function; the first call constructs it. T needs no public
// constructor: NeverDestroyed<T> may be its friend.
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
