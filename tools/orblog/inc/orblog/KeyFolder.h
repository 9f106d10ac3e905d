// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <array>
#include <string>
#include <vector>

#include "UniqueFd.h"
#include "orblog/ByteView.h"

namespace orblog {

// The paths of a key pair and its configuration file.
struct KeyFiles {
  explicit KeyFiles(const std::string& directory);
  std::string privateKey, publicKey, configuration;
};

// A directory into which one run writes a private key, a public key and a configuration: all three
// or none, even if other runs work at the same time or this run is killed. A lock on the directory
// excludes other runs; it ends with the process. A directory in it, .orblog-keygen-XXXXXX, has the
// new and the replaced files until the run is complete. After a killed run, the next run finds this
// directory and restores the old state. The configuration is removed first and written last, so
// there is never a configuration beside a private key of another pair. Used by one thread.
class KeyFolder {
 public:
  explicit KeyFolder(std::string directory);
  KeyFolder(const KeyFolder&) = delete;
  KeyFolder& operator=(const KeyFolder&) = delete;

  // Excludes other runs, restores the state after a killed run (with a sentence in `notes`), and
  // checks that the three names are free or, with `replaces`, can be replaced. False with a
  // sentence in `error` on failure.
  bool take(bool replaces, std::vector<std::string>& notes, std::string& error);
  // Writes the three files. False with a sentence on failure; then the old state is restored, or
  // the sentence says what is not restored.
  bool put(ByteView privateKey, ByteView publicKey, ByteView configuration, std::string& error);

 private:
  enum File : size_t { kPrivateKey, kPublicKey, kConfiguration };
  // The working directory of this run or of a killed run.
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
