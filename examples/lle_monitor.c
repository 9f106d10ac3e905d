// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
/*
 * Shows the latency of the radio link as the LLE service estimates it.
 *
 *   lle_monitor [--seconds N]    until Ctrl-C, or for N seconds of reports
 *
 * Exit status: 0 when at least one report arrived and nothing failed.
 */
#include <inttypes.h>
#include <stdio.h>

#include "example_support.h"

/* The daemon defines what a criteria value means; these are right for the daemon stand-in. */
#define CRITERIA_REPORTS 1
#define CRITERIA_NO_REPORTS 0

/* What the callbacks leave for the main thread. Static, as callbacks get no user-data pointer. */
static ExampleService lle = {.name = "LLE"};

/* Told of the service's status. Runs on the receiver thread or on the worker thread. */
static void onStatus(status_v2_e status) { noteStatus(&lle, status); }

/* Gets every estimation report. Runs on the receiver thread. */
static void onReport(int32_t result, const LleEstimationReport* report) {
  (void)result; /* always 0 in a periodic report: the two report statuses say what is usable */
  lockState();
  lle.reports++;
  /* The daemon defines the units; the daemon stand-in uses microseconds. */
  printf("report %lu: %s, uplink %" PRIu64 " us (variance %" PRIu64
         ", status %d), downlink %" PRIu64 " us (variance %" PRIu64 ", status %d)\n",
         lle.reports, orbSdlAccessNetworkTypeName(report->rat), report->ulLatencyEstimation,
         report->ulVarianceEstimation, report->ulReportStatus, report->dlLatencyEstimation,
         report->dlVarianceEstimation, report->dlReportStatus);
  unlockState();
}

/* Starts the reports: the criteria are the only call for that. */
static bool startReports(void) {
  /* Register first, so that no report is missed. */
  return worked("lleRegEstimationReports", lleRegEstimationReports(onReport)) &&
         worked("lleSetReportingCriteria", lleSetReportingCriteria(CRITERIA_REPORTS));
}

/* Everything between enabling and disabling the service. */
static bool monitor(int seconds) {
  if (!worked("createLleClient", createLleClient(onStatus))) return false;

  /* The reports arrive in onReport() while we wait for the end. */
  bool ok = waitForAnswer(&lle.enabled, "createLleClient") && startReports() &&
            waitForEnd(seconds) &&
            worked("lleSetReportingCriteria", lleSetReportingCriteria(CRITERIA_NO_REPORTS));
  ok = worked("destroyLleClient", destroyLleClient()) && ok;
  return summarize(&lle) && ok; /* no callback runs any more */
}

int main(int argc, char** argv) { return runExample(argc, argv, "lle_monitor", monitor); }
