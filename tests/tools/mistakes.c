// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
/* An application that makes mistakes; it ends with 0 when each of its calls is refused. */
#include <orb/sdl.h>
#include <stddef.h>

static void onInterruption(LliHandoffIndType type, LliPreHandoffState state,
                           const LliInterruptInfo* info) {
  (void)type;
  (void)state;
  (void)info;
}

int main(void) {
  int refused = createLceClient(NULL) != 0;
  refused += orb_lle_enable(NULL) == 0;
  refused += lliRegLinkInterruptInd(onInterruption) < 0; /* nothing is enabled */
  refused += destroyLleClient() != 0;
  return refused == 4 ? 0 : 1;
}
