// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <array>
#include <string>
#include <vector>

#include "UniqueFd.h"
#include "orblog/ByteView.h"

namespace orblog {

// Where a key pair and its configuration file are.
struct KeyFiles {
  explicit KeyFiles(const std::string& directory);
  std::string privateKey, publicKey, configuration;
};

// A directory into which one run puts a private key, a public key and a configuration, all three or
// none, whatever other runs do at the same time and wherever this one is killed. A lock on the
// directory keeps others out and goes with the process. A directory in it, .orblog-keygen-XXXXXX,
// holds what is new and what is replaced until all is done; the next run finds it and makes good
// what one that was killed has left. The configuration leaves first and comes last, so there is
// never one beside a private key that is not its own. Used by one thread.
class KeyFolder {
 public:
  explicit KeyFolder(std::string directory);
  KeyFolder(const KeyFolder&) = delete;
  KeyFolder& operator=(const KeyFolder&) = delete;

  // Keeps other runs out, makes good what a killed one has left, with a sentence in `notes`, and
  // looks whether the three names are free, or with `replaces` can be made so. False when they
  // cannot be had, with a sentence in `error`.
  bool take(bool replaces, std::vector<std::string>& notes, std::string& error);
  // Puts the three files there. False on failure, with a sentence; then all is as it was, or the
  // sentence says what is not.
  bool put(ByteView privateKey, ByteView publicKey, ByteView configuration, std::string& error);

 private:
  enum File : size_t { kPrivateKey, kPublicKey, kConfiguration };
  // The working directory of one run, this one or a killed one.
  class Work;

  bool lock(bool replaces, std::string& error);
  void recover(std::vector<std::string>& notes) const;
  const std::string mDirectory;
  const std::array<std::string, 3> mPaths;
  UniqueFd mLock;
  bool mLocked = false;
  bool mReplaces = false;
};

}  // namespace orblog
