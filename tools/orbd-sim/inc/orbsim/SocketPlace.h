// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

#pragma once

#include <string>
#include <utility>
#include <vector>

namespace orbsim {

// Where clients look for the daemon. A platform has the directory, a desktop has not.
constexpr char kSocketDirectory[] = "/dev/socket";
constexpr char kSocketPath[] = "/dev/socket/orb";

// The path that a server listens on, and its directory, which is made where it is missing if it is
// that of kSocketPath, and gone again at the end. Owned by the server, which uses it on one thread
// at a time.
class SocketPlace {
 public:
  explicit SocketPlace(std::string path, unsigned mode = 0666)
      : mPath(std::move(path)), mMode(mode) {}

  // Why nobody can listen on the path, as far as that can be seen beforehand; empty when nothing
  // speaks against it.
  static std::string whyWrong(const std::string& path);

  // A descriptor that listens, does not block, and takes clients of every user, in the place of a
  // socket that nobody listens on. -1 with error() when that fails; nothing stays then.
  int open(int backlog);
  // As a server that has ended without taking it away: a socket on which nobody listens, so that
  // connections are refused. False with error() when that fails.
  bool leaveUnused();
  void removeSocket();
  // Removes a socket on which nobody listens; somebody else may have taken the place of the one
  // that was ours.
  void removeUnused();
  // Removes the directory that open() made.
  void leave();
  // What became of the directory, and of what was to be removed, since it was last asked.
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
  const unsigned mMode;  // applications of every user connect, or the owner alone
  std::string mError;
  std::vector<std::string> mLines;
  bool mMadeDirectory = false;
};

}  // namespace orbsim
