// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <fcntl.h>
#include <gtest/gtest.h>
#include <stdlib.h>
#include <unistd.h>

#include <string>

#include "Built.h"
#include "FreshLibrary.h"

// Common parts of the tests of the desktop stand-ins, which are opened as shared libraries.

inline std::string readAll(int fd) {
  std::string all;
  char part[4096];
  for (ssize_t size; (size = pread(fd, part, sizeof part, static_cast<off_t>(all.size()))) > 0;)
    all.append(part, static_cast<size_t>(size));
  return all;
}

// A temporary file that is removed with the test.
class TempFile {
 public:
  TempFile() : mFd(mkostemp(mPath, O_CLOEXEC)) { EXPECT_GE(mFd, 0); }
  ~TempFile() {
    close(mFd);
    unlink(mPath);
  }
  const char* path() const { return mPath; }
  // A path that cannot exist.
  std::string below() const { return path() + std::string("/file"); }
  int fd() const { return mFd; }
  std::string text() const { return readAll(mFd); }
  void write(const std::string& text) {
    EXPECT_EQ(static_cast<ssize_t>(text.size()), ::write(mFd, text.data(), text.size()));
  }

 private:
  char mPath[32] = "/tmp/orb-host-XXXXXX";
  const int mFd;
};

// Redirects standard error to another descriptor while it lives.
class Redirected {
 public:
  explicit Redirected(int fd) : mSaved(dup(STDERR_FILENO)) { dup2(fd, STDERR_FILENO); }
  ~Redirected() {
    dup2(mSaved, STDERR_FILENO);
    close(mSaved);
  }

 private:
  const int mSaved;
};

class HostPlatformTest : public testing::Test {
 protected:
  explicit HostPlatformTest(const char* path) : mPath(built(path)) {
    for (const char* name : kVariables) unsetenv(name);
    load();
  }
  ~HostPlatformTest() override {
    for (const char* name : kVariables) unsetenv(name);
  }

  // Again, with the current environment.
  void load() { mLibrary = openFresh(mPath); }
  void loadWith(const char* variable, const char* value) {
    setenv(variable, value, 1);
    load();
  }
  template <class Function>
  Function find(const char* symbol) const {
    return reinterpret_cast<Function>(dlsym(mLibrary, symbol));
  }

 private:
  static constexpr const char* kVariables[] = {"ORB_LOG_LEVEL",       "NO_COLOR",
                                               "ORB_DIAG_FILE",       "ORB_DIAG_SOCKET",
                                               "ORB_PROPERTIES_FILE", "a_b_c"};
  const std::string mPath;
  void* mLibrary = nullptr;
};
