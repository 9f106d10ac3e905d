// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

#pragma once

#include <string>

namespace orbsim::testkit {

// This process's connections to the daemon, sent to a path while the object lives. One at a time
// has them.
class ProcessRedirection {
 public:
  explicit ProcessRedirection(const std::string& path);
  ~ProcessRedirection();
  ProcessRedirection(const ProcessRedirection&) = delete;
  ProcessRedirection& operator=(const ProcessRedirection&) = delete;

  // Empty when it works.
  const std::string& error() const { return mError; }

 private:
  bool mHas = false;
  std::string mError;
};

}  // namespace orbsim::testkit
