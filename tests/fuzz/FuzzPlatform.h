// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <string>
#include <vector>

// The platform (log, properties, diagnostics) of the fuzz targets. It formats every line as the
// real one does, so a text that is wrongly used as a format shows as a fault. It checks that no
// line is longer than 511 characters, and drops the line. All functions may be called from any
// thread.
namespace fuzzplatform {

constexpr size_t kLongestLine = 511;

// Gets every line on the thread that writes it; it must not log. Null for none.
using Observer = void (*)(const char* text);
void setObserver(Observer observer);

// While it exists, keeps the lines that the current thread writes. One at a time per thread.
class Capture {
 public:
  Capture();
  Capture(const Capture&) = delete;
  Capture& operator=(const Capture&) = delete;
  ~Capture();
  const std::vector<std::string>& lines() const { return mLines; }

 private:
  std::vector<std::string> mLines;
};

// What the log reads during its set-up: the value of its property, and whether permissions are
// wanted.
void setLogging(const std::string& value);
void setLogPerms(bool on);
// Whether a client of the diagnostic channel takes packets; false at first.
void setListening(bool on);

}  // namespace fuzzplatform
