// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include <orb/version.h>

extern "C" {

const char* orbSdlSdkVersion(void) { return ORB_SDL_SDK_VERSION; }

}  // extern "C"
