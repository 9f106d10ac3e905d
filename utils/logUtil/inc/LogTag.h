// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <atomic>

// The tag of the process's lines in the platform log; empty until one is set. Any thread reads it
// at any time, without a lock and while the process exits. So a text that was ever a tag is kept
// for good; there are few. Tags::lock (LogTag.cpp) guards the texts.
class LogTag {
 public:
  static const char* get() { return current.load(); }
  // Null counts as the empty tag. Throws std::bad_alloc, and the former tag stays.
  static void set(const char* tag);

 private:
  static std::atomic<const char*> current;
};
