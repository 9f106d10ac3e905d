// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

#pragma once

#include <functional>
#include <string>

namespace orbsim {

// Where clients look for the daemon. A platform has the directory, a desktop has not.
constexpr char kSocketDirectory[] = "/dev/socket";
constexpr char kSocketPath[] = "/dev/socket/orb";

// The path that a server listens on, and its directory, which is made where it is missing if it is
// that of kSocketPath, and gone again at the end. Owned and used by the server's owner thread;
// removeSocket() also by another, since it touches the file only.
class SocketPlace {
 public:
  using Log = std::function<void(const std::string&)>;

  // The log is told of the directory; it may be empty.
  SocketPlace(std::string path, Log log, unsigned mode = 0666)
      : mPath(std::move(path)), mLog(std::move(log)), mMode(mode) {}

  // Why nobody can listen on the path, as far as that can be seen beforehand; empty when nothing
  // speaks against it.
  static std::string whyWrong(const std::string& path);

  // A descriptor that listens, does not block, and takes clients of every user, in the place of a
  // socket that nobody listens on. -1 with error() when that fails; nothing stays then.
  int open(int backlog);
  void removeSocket();
  // Removes the directory that open() made.
  void leave();

  const std::string& path() const { return mPath; }
  const std::string& error() const { return mError; }

 private:
  bool makeDirectory();
  bool clear();
  int listen(int backlog);
  bool fail(const std::string& reason);

  const std::string mPath;
  const Log mLog;
  const unsigned mMode;  // applications of every user connect, or the owner alone
  std::string mError;
  bool mMadeDirectory = false;
};

}  // namespace orbsim
