// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

#pragma once

#include <string>

namespace orbsim {

// The path of the running program; empty if the system does not provide it.
std::string programPath();
// The folder of a file.
std::string folderOf(const std::string& path);

}  // namespace orbsim
