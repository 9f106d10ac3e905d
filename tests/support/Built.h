// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <cstdlib>
#include <cstring>
#include <string>

// Where a file of the build is: where the build made it, unless the tests were carried to another
// place, another machine perhaps, together with the files that they need. ORB_TEST_FILES names that
// place then.
inline std::string built(const char* path) {
  constexpr size_t kBuild = sizeof ORB_BUILD - 1;
  const char* const moved = std::getenv("ORB_TEST_FILES");
  if (moved == nullptr || std::strncmp(path, ORB_BUILD, kBuild) != 0) return path;
  return std::string(moved) + (path + kBuild);
}

// Whether programs of the build are started by scripts that put an emulator in front of them.
inline bool startedByScript() {
  return ORB_STARTED_BY_SCRIPT != 0 && std::getenv("ORB_TEST_FILES") == nullptr;
}
