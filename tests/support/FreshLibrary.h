// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <dlfcn.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <stdlib.h>
#include <unistd.h>

#include <fstream>
#include <string>

// Loads a library once more. The desktop's stand-ins read the environment while they are loaded,
// and a process loads each file only once. So this loads a copy of the file, which stays loaded.
inline void* openFresh(const std::string& library) {
  char path[] = "/tmp/orb-library-XXXXXX";
  const int fd = mkostemp(path, O_CLOEXEC);
  EXPECT_GE(fd, 0);
  close(fd);
  std::ofstream(path, std::ios::binary) << std::ifstream(library, std::ios::binary).rdbuf();
  void* const handle = dlopen(path, RTLD_NOW | RTLD_LOCAL);
  EXPECT_NE(nullptr, handle) << dlerror();
  unlink(path);
  return handle;
}
