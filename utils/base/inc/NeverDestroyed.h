// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

// Holds a static object that is constant-initialised and whose destructor never runs, so that
// threads may use it while the process exits. T needs a constexpr default constructor.
template <typename T>
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
