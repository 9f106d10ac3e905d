// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
/*
 * Uses LCE for as long as it runs, whatever becomes of the daemon, and without troubling it.
 *
 *   reconnect [--seconds N]    until Ctrl-C, or for N seconds
 *
 * Exit status: 0 when at least one report arrived, 1 when none did, 2 wrong arguments.
 *
 * The rules, which any application may take over:
 *
 *   - The library repeats nothing. A daemon that was gone knows nothing: all is said anew.
 *   - One enable is under way at a time, and nothing is asked before it is answered. So never more
 *     than one request waits for a daemon that is not there.
 *   - The wait for the first status has a limit: a daemon may accept a connection and stay silent.
 *   - After every failure the service is disabled. That ends what is under way, and no callback of
 *     the time before comes any more: the next attempt starts with clean flags.
 *   - Attempts are further and further apart, up to a minute. A daemon that is gone for an hour
 * costs some sixty attempts, and one that refuses for an hour no more.
 */
#define _POSIX_C_SOURCE 200809L

#include <errno.h>
#include <stdio.h>
#include <time.h>

#include "example_support.h"

#define STATUS_SECONDS 10 /* how long the first status may take; the library connects for five */
#define FIRST_PAUSE_SECONDS 1
#define LONGEST_PAUSE_SECONDS 60

/* What the callbacks leave for the main thread, under the lock. */
static bool answered;      /* a status has come since the enable */
static bool lost;          /* one that ends the use of the connection: no success */
static status_v2_e status; /* the latest one that did */
static unsigned long reports, reportsBefore; /* all, and those before this connection */

static void onStatus(status_v2_e now) {
  lockState();
  answered = true;
  if (now != STATUS_V2_SUCCESS && now != STATUS_V2_SERVICE_UP) {
    lost = true;
    status = now;
  }
  unlockState();
}

static void onCriteria(LceReportingCriteriaStatus now) {
  if (now == LCE_REPORTING_CRITERIA_STATUS_SUCCESS) return;
  complain("criteria refused: %s", orbLceReportingCriteriaStatusName(now));
  lockState();
  lost = true;
  status = STATUS_V2_INVALID_ARG;
  unlockState();
}

static void onReport(LceEstimationReportStatus now, LceEstimationReport report) {
  if (now != LCE_ESTIMATION_REPORT_STATUS_SUCCESS) return;
  lockState();
  if (reports++ == reportsBefore) {
    printf("reports arrive, the first one %s %lu\n", orbLceLinkDirectionName(report.linkDirection),
           (unsigned long)report.rate);
  }
  unlockState();
}

/* The end of the run, in seconds of the monotonic clock; 0: none. */
static time_t end;

static time_t now(void) {
  struct timespec time;
  clock_gettime(CLOCK_MONOTONIC, &time);
  return time.tv_sec;
}

/* Waits until `*flag` (NULL: just waits) for so many seconds (0: no limit), but not beyond the end
 * of the run. False when the run is over. */
static bool waitFor(const bool* flag, int seconds) {
  const time_t left = end - now();
  if (end != 0 && left <= 0) return false;
  if (end != 0 && (seconds == 0 || left < seconds)) seconds = (int)left;
  return waitUntil(flag, seconds) != EINTR && (end == 0 || now() < end);
}

/* Tells the daemon all that it has to know. */
static bool startReports(void) {
  static const LceReportingCriteria criteria = {.accessNetworkType = SDL_ACCESS_NETWORK_TYPE_LTE};
  return worked("lceRegEstimationReports", lceRegEstimationReports(onReport)) &&
         worked("lceSetReportingCriteria", lceSetReportingCriteria(&criteria, onCriteria)) &&
         worked("lcePerformReportingAction", lcePerformReportingAction(LCE_REPORTING_ACTION_START));
}

/* One attempt, and the use of the connection for as long as it lasts. Says why it ended. False when
 * the run is over. */
static bool use(void) {
  answered = lost = false; /* no callback runs: the service is not enabled */
  reportsBefore = reports;
  if (!worked("createLceClient", createLceClient(onStatus))) return true; /* later, perhaps */
  bool going = waitFor(&answered, STATUS_SECONDS);
  lockState();
  const bool silent = !answered, enabled = answered && !lost;
  unlockState();
  if (going && silent) complain("no answer in %d s", STATUS_SECONDS);
  if (enabled) {
    printf("enabled\n");
    going = going && startReports() && waitFor(&lost, 0);
  }
  destroySdfClient();
  if (lost && going) complain("%s", orbStatusV2Name(status)); /* no callback runs any more */
  return going;
}

static bool run(int seconds) {
  end = seconds > 0 ? now() + seconds : 0;
  int pause = FIRST_PAUSE_SECONDS;
  unsigned long attempts = 0;
  while (true) {
    attempts++;
    if (!use()) break;
    /* What worked for a while begins anew with the short pause. */
    if (reports > reportsBefore) pause = FIRST_PAUSE_SECONDS;
    fprintf(stderr, "attempt %lu is over, the next in %d s\n", attempts, pause);
    if (!waitFor(NULL, pause)) break;
    pause = 2 * pause < LONGEST_PAUSE_SECONDS ? 2 * pause : LONGEST_PAUSE_SECONDS;
  }
  printf("%lu attempts, %lu reports\n", attempts, reports);
  if (reports == 0) complain("no report arrived");
  return reports > 0;
}

int main(int argc, char** argv) { return runExample(argc, argv, "reconnect", run); }
