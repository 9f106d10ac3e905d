// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <set>
#include <string>

namespace failcalls {

// Open descriptors, as "number file". Log files are left out: one stays open.
std::set<std::string> descriptors();
// Whether a thread of that name runs now.
bool runs(const std::string& thread);

// Waits, for seconds at most, until the library's threads have ended and @p before is what is open.
// What is still there then, or nothing.
std::string notGivenBack(const std::set<std::string>& before);

}  // namespace failcalls
