// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

#pragma once

#include <string>

namespace orbsim {

// The path of a daemon for one program only: a given path, or a path in a temporary folder, which
// is removed by the destructor. Owned and used by one thread.
class PrivateSocket {
 public:
  explicit PrivateSocket(std::string path);
  ~PrivateSocket();
  PrivateSocket(const PrivateSocket&) = delete;
  PrivateSocket& operator=(const PrivateSocket&) = delete;

  // Empty on failure; error() has the reason.
  const std::string& path() const { return mPath; }
  const std::string& error() const { return mError; }

 private:
  bool makeIn(const std::string& parent);

  std::string mFolder;
  std::string mPath;
  std::string mError;
};

}  // namespace orbsim
