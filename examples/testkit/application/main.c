// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
/* Prints each change of what the application sees and does, until SIGTERM or Ctrl-C. */
#define _POSIX_C_SOURCE 200809L

#include <pthread.h>
#include <signal.h>
#include <stdio.h>

#include "link_aware.h"

static void show(const LinkView* view) {
  static const char* const daemon[] = {"unknown", "silent", "absent", "there"};
  printf("daemon %s, %s at %u kbit/s, %s%s\n", daemon[view->daemon],
         view->highQuality ? "high quality" : "low quality", (unsigned)view->rate,
         view->holding ? "hold" : "send", view->refused ? ", criteria refused" : "");
  fflush(stdout);
}

int main(void) {
  /* Blocked before any thread starts, so in all of them: only sigwait() sees them. */
  sigset_t ending;
  sigemptyset(&ending);
  sigaddset(&ending, SIGINT);
  sigaddset(&ending, SIGTERM);
  if (pthread_sigmask(SIG_BLOCK, &ending, NULL) != 0 || !linkAwareStart(show)) return 1;
  int number = 0;
  while (sigwait(&ending, &number) != 0) {
  }
  linkAwareStop();
  return 0;
}
