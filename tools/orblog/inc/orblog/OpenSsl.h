// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include "OpenSslPtr.h"

namespace orblog {

// OpenSSL's objects live in these only.
using ::OpenSslPtr;

}  // namespace orblog
