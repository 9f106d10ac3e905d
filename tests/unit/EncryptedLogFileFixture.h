// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

// For one file of a program: this program's write(), ftruncate(), unlink() and geteuid() are used
// instead of the C library's and do what a test wants.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <deque>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "EncryptedLogFile.h"
#include "FailingWrites.h"

namespace logfile {

namespace fs = std::filesystem;

using writes::kAll;
using writes::Outcome;
using writes::outcomes;

inline bool truncateFails = false;
inline bool unlinkFails = false;
inline std::optional<uid_t> user;

}  // namespace logfile

extern "C" int ftruncate(int fd, off_t size) {
  if (!logfile::truncateFails) return ORB_NEXT(ftruncate)(fd, size);
  errno = EIO;
  return -1;
}

extern "C" int unlink(const char* path) {
  if (!logfile::unlinkFails) return ORB_NEXT(unlink)(path);
  errno = EPERM;
  return -1;
}

extern "C" uid_t geteuid() { return logfile::user ? *logfile::user : ORB_NEXT(geteuid)(); }

namespace logfile {

// A temporary folder, and the path of a file in it that does not exist yet.
class EncryptedLogFileFixture : public testing::Test {
 protected:
  explicit EncryptedLogFileFixture(std::string text = "") : header(std::move(text)) {
    char name[] = "/tmp/logfile-XXXXXX";
    directory = mkdtemp(name);
    path = directory / "log";
    file = made(path);
    writes::forget();
    truncateFails = unlinkFails = false;
    user.reset();
  }
  ~EncryptedLogFileFixture() override {
    file.close();
    unlinkFails = false;
    fs::remove_all(directory);
  }

  EncryptedLogFile made(const fs::path& name) const {
    return EncryptedLogFile(name, {header.begin(), header.end()});
  }
  bool append(const std::string& text) { return append(file, text); }
  static bool append(EncryptedLogFile& to, const std::string& text) {
    return to.append(reinterpret_cast<const uint8_t*>(text.data()), text.size());
  }
  // With a separate object.
  bool append(const fs::path& name, const std::string& text) const {
    EncryptedLogFile other = made(name);
    return append(other, text);
  }
  std::string content() const { return content(path); }
  static std::string content(const fs::path& name) {
    std::ifstream stream(name, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(stream), {});
  }
  static void leave(const fs::path& name, const std::string& text) {
    std::ofstream(name, std::ios::binary) << text;
  }

  const std::string header;
  fs::path directory, path;
  EncryptedLogFile file;
};

}  // namespace logfile
