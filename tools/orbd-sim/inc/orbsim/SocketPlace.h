// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

#pragma once

#include <string>
#include <utility>
#include <vector>

namespace orbsim {

// The path at which clients connect. The directory exists on a platform, but not on a desktop.
constexpr char kSocketDirectory[] = "/dev/socket";
constexpr char kSocketPath[] = "/dev/socket/orb";

// The path of a server's socket, and its directory. Only the directory of kSocketPath is created if
// missing, and removed at the end. Owned by the server, which uses it on one thread at a time.
class SocketPlace {
 public:
  explicit SocketPlace(std::string path, unsigned mode = 0666)
      : mPath(std::move(path)), mMode(mode) {}

  // The reason why the path cannot be used, as far as it can be checked in advance; empty if there
  // is none.
  static std::string whyWrong(const std::string& path);

  // A listening, non-blocking descriptor for clients of every user. Replaces a socket on which no
  // process listens. -1 with error() on failure; nothing is left then.
  int open(int backlog);
  // Creates a socket on which no process listens, like a server that ended without removing it, so
  // that connections are refused. False with error() on failure.
  bool leaveUnused();
  void removeSocket();
  // Removes the socket if no process listens on it, because another process may have replaced our
  // socket.
  void removeUnused();
  // Removes the directory that open() created.
  void leave();
  // Log lines about the directory and the removed socket since the last call.
  std::vector<std::string> takeLines() { return std::exchange(mLines, {}); }

  const std::string& path() const { return mPath; }
  const std::string& error() const { return mError; }

 private:
  bool makeDirectory();
  bool clear();
  int listen(int backlog);
  int bind();
  bool fail(const std::string& reason);

  const std::string mPath;
  const unsigned mMode;  // for users of all applications, or for the owner only
  std::string mError;
  std::vector<std::string> mLines;
  bool mMadeDirectory = false;
};

}  // namespace orbsim
