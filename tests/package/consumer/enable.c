/* SPDX-License-Identifier: Apache-2.0
 * Copyright (c) 2026 The OrbSdlSdk authors
 * Ends with 0 when a daemon enables LCE. */
#define _POSIX_C_SOURCE 200809L
#include <orb/sdl.h>
#include <stdio.h>
#include <unistd.h>

static int ends[2];

static void onStatus(status_v2_e status) {
  const char failed = status == STATUS_V2_SUCCESS ? 0 : 1;
  if (write(ends[1], &failed, 1) != 1) _exit(3);
}

int main(void) {
  char failed = 1;
  if (pipe(ends) != 0 || createLceClient(onStatus) != 0) return 2;
  if (read(ends[0], &failed, 1) != 1) return 2;
  destroySdfClient();
  return failed;
}
