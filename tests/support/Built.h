// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <cstdlib>
#include <cstring>
#include <string>

// The path of a file of the build: in the build folder, or, if the tests and their files were
// copied to another folder or machine, in the folder that ORB_TEST_FILES names.
inline std::string built(const char* path) {
  constexpr size_t kBuild = sizeof ORB_BUILD - 1;
  const char* const moved = std::getenv("ORB_TEST_FILES");
  if (moved == nullptr || std::strncmp(path, ORB_BUILD, kBuild) != 0) return path;
  return std::string(moved) + (path + kBuild);
}

// Whether scripts start the programs of the build through an emulator.
inline bool startedByScript() {
  return ORB_STARTED_BY_SCRIPT != 0 && std::getenv("ORB_TEST_FILES") == nullptr;
}
