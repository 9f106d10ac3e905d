// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

#pragma once

#include <string>

namespace orbsim {

// The file of the program that runs; empty where the system does not tell.
std::string programPath();
// The folder that a file lies in.
std::string folderOf(const std::string& path);

}  // namespace orbsim
