// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "orbctl/Screen.h"

namespace orbctl {

std::unique_ptr<Screen> openScreen(bool) { return nullptr; }

}  // namespace orbctl
