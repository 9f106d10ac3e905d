// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <cstddef>

#include "Interposer.h"

namespace failcalls {

// Memory for operator new. free() accepts it, and the program's own malloc does not count it.
void* uncountedMalloc(std::size_t size);

}  // namespace failcalls
