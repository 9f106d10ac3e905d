// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <cstddef>
#include <string>

namespace diaghost {

constexpr size_t kMaxPayloadSize = 0xFFFF;
// Room for the longest payload in hexadecimal and the words before it.
constexpr size_t kMaxRequestSize = 2 * kMaxPayloadSize + 64;

// Does what a request on the control socket says and gives the reply. Runs on the control thread; a
// command's function is called on it.
std::string answer(const std::string& request);

}  // namespace diaghost
