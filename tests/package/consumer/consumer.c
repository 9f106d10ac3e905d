/* SPDX-License-Identifier: Apache-2.0
 * Copyright (c) 2026 The OrbSdlSdk authors
 * The least program that needs the library and, through it, all that it needs. */
#include <orb/sdl.h>
#include <stddef.h>

int main(void) { return lceRegEstimationReports(NULL) < 0 ? 0 : 1; }
