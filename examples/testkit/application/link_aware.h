// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
/*
 * A small application over the library, to be tested: something that sends media and follows the
 * radio link. It sends in high quality while there is room, in low quality otherwise, holds while a
 * handoff interrupts the link, and finds the daemon again when that was gone.
 */
#ifndef LINK_AWARE_H
#define LINK_AWARE_H

#include <stdbool.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* What is known of the daemon. */
typedef enum LinkDaemon {
  LINK_DAEMON_UNKNOWN, /* asked, and no answer yet */
  LINK_DAEMON_SILENT,  /* no answer in a second; one may still come */
  LINK_DAEMON_ABSENT,  /* nobody is there, or the connection was lost */
  LINK_DAEMON_THERE
} LinkDaemon;

/* How the application sees the link and what it makes of it. */
typedef struct LinkView {
  LinkDaemon daemon;
  unsigned connections; /* times that the daemon was found */
  bool refused;         /* our criteria were refused: the daemon's own are in use */
  unsigned reports;     /* of the capacity, all in all */
  uint32_t rate;        /* the last one, kbit/s */
  bool highQuality;     /* what it is good for */
  bool holding;         /* nothing is sent: the link is about to be interrupted, or is */
} LinkView;

/* Begins; `changed` gets each view that differs from the one before, from any thread, one at a
 * time. */
bool linkAwareStart(void (*changed)(const LinkView* view));
/* Ends. No view comes any more. */
void linkAwareStop(void);

#ifdef __cplusplus
}
#endif

#endif /* LINK_AWARE_H */
