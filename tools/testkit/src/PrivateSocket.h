// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

#pragma once

#include <string>

namespace orbsim::testkit {

// Where a daemon of a test listens: a given path, or one in a folder of its own, which goes with
// the object. Owned and used by one thread.
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
