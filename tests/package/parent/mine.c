/* SPDX-License-Identifier: Apache-2.0
 * Copyright (c) 2026 The OrbSdlSdk authors */
int mine(void);
int mine(void) { return 0; }
