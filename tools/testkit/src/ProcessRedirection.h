// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

#pragma once

#include <string>

namespace orbsim::testkit {

// Redirects this process's connections to the daemon to a path while the object lives. Only one
// object at a time.
class ProcessRedirection {
 public:
  explicit ProcessRedirection(const std::string& path);
  ~ProcessRedirection();
  ProcessRedirection(const ProcessRedirection&) = delete;
  ProcessRedirection& operator=(const ProcessRedirection&) = delete;

  // Empty on success.
  const std::string& error() const { return mError; }

 private:
  bool mHas = false;
  std::string mError;
};

}  // namespace orbsim::testkit
