// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <set>
#include <string>

namespace failcalls {

// Open descriptors, as "number file", without log files, because one stays open.
std::set<std::string> descriptors();
// Whether a thread with that name runs now.
bool runs(const std::string& thread);

// Waits, for some seconds at most, until the library's threads have ended and the open descriptors
// are those of @p before. Returns what is left then; empty if nothing is.
std::string notGivenBack(const std::set<std::string>& before);

}  // namespace failcalls
