// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <stdlib.h>

// For a test's own definition of a function of the C library. It must promise the same about
// exceptions as the declaration, and some C libraries declare that nothing is thrown.
#ifdef __THROW
#define ORB_C_FUNCTION __THROW
#else
#define ORB_C_FUNCTION
#endif
