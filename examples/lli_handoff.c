// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
/*
 * Follows the handoffs of the radio link, phase by phase, as the LLI service announces them.
 *
 *   lli_handoff [--seconds N]    until Ctrl-C, or for N seconds of indications
 *
 * Exit status: 0 when at least one indication arrived and nothing failed.
 */
#include <inttypes.h>
#include <stdio.h>

#include "example_support.h"

/* What the callbacks leave for the main thread. Static, as callbacks get no user-data pointer. */
static ExampleService lli = {.name = "LLI"};
static unsigned long handoffs;

/* Told of the service's status. Runs on the receiver thread or on the worker thread. */
static void onStatus(status_v2_e status) { noteStatus(&lli, status); }

/*
 * Gets every indication. Runs on the receiver thread. `type` says which of the two states has a
 * meaning: `preState` before a handoff, `info->handoffState` during one.
 */
static void onLinkInterrupt(LliHandoffIndType type, LliPreHandoffState preState,
                            const LliInterruptInfo* info) {
  lockState();
  lli.reports++;
  if (type == LLI_HANDOFF_IND_TYPE_PRE_HANDOFF && preState == LLI_PRE_HANDOFF_STATE_ENTRY) {
    handoffs++;
    printf("handoff %lu, %s to %s\n", handoffs, orbLliRatName(info->sourceRat),
           orbLliRatName(info->targetRat));
  }
  const char* phase = handoffPhaseName(type, preState, info->handoffState);
  /* The unit is the daemon's to define; the daemon stand-in counts milliseconds. */
  if (info->estimatedTimeToInterruption > 0) {
    printf("  %-8s  interruption in %" PRIu64 " ms for about %" PRIu64 " ms\n", phase,
           info->estimatedTimeToInterruption, info->estimatedInterruptionDuration);
  } else if (info->estimatedInterruptionDuration > 0) {
    printf("  %-8s  interrupted for about %" PRIu64 " ms\n", phase,
           info->estimatedInterruptionDuration);
  } else {
    printf("  %s\n", phase);
  }
  unlockState();
}

/* Everything between enabling and disabling the service. */
static bool follow(int seconds) {
  if (!worked("createLliClient", createLliClient(onStatus))) return false;

  /* Indications come from the registration on. There is no call that stops them but destroy. */
  bool ok = waitForAnswer(&lli.enabled, "createLliClient") &&
            worked("lliRegLinkInterruptInd", lliRegLinkInterruptInd(onLinkInterrupt)) &&
            waitForEnd(seconds);
  ok = worked("destroyLliClient", destroyLliClient()) && ok;
  return summarize(&lli) && ok; /* no callback runs any more */
}

int main(int argc, char** argv) { return runExample(argc, argv, "lli_handoff", follow); }
