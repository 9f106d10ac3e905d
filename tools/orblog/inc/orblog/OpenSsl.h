// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include "OpenSslPtr.h"

namespace orblog {

// Owns an object of OpenSSL.
using ::OpenSslPtr;

}  // namespace orblog
