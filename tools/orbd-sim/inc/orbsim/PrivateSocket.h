// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

#pragma once

#include <string>

namespace orbsim {

// Where a daemon listens that is for one program only: a given path, or one in a folder of its own,
// which goes with the object. Owned and used by one thread.
class PrivateSocket {
 public:
  explicit PrivateSocket(std::string path);
  ~PrivateSocket();
  PrivateSocket(const PrivateSocket&) = delete;
  PrivateSocket& operator=(const PrivateSocket&) = delete;

  // Empty when there is none; error() says why.
  const std::string& path() const { return mPath; }
  const std::string& error() const { return mError; }

 private:
  bool makeIn(const std::string& parent);

  std::string mFolder;
  std::string mPath;
  std::string mError;
};

}  // namespace orbsim
