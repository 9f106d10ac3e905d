// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
/*
 * Shows the capacity of the radio link as the LCE service estimates it.
 *
 *   lce_monitor [--seconds N]    until Ctrl-C, or for N seconds of reports
 *
 * Exit status: 0 when at least one report arrived and nothing failed.
 */
#include <inttypes.h>
#include <stdio.h>
#include <string.h>

#include "example_support.h"

/* What the callbacks leave for the main thread. Static, as callbacks get no user-data pointer. */
static ExampleService lce = {.name = "LCE"};
static bool criteriaAnswered;
static LceReportingCriteriaStatus criteriaStatus; /* with criteriaAnswered */

/* Told of the service's status. Runs on the receiver thread or on the worker thread. */
static void onStatus(status_v2_e status) { noteStatus(&lce, status); }

/* Gets the answer to lceSetReportingCriteria(). Runs on the receiver thread. */
static void onCriteria(LceReportingCriteriaStatus status) {
  lockState();
  criteriaStatus = status;
  criteriaAnswered = true;
  unlockState();
}

/* Gets every estimation report. Runs on the receiver thread. */
static void onReport(LceEstimationReportStatus status, LceEstimationReport report) {
  if (status != LCE_ESTIMATION_REPORT_STATUS_SUCCESS) {
    complain("no estimate: %s", orbLceEstimationReportStatusName(status));
    return;
  }
  lockState();
  lce.reports++;
  printf("report %lu: %s, rate %" PRIu32 ", confidence %d of 7, uplink queue %" PRIu32 "\n",
         lce.reports, orbLceLinkDirectionName(report.linkDirection), report.rate,
         (int)report.confidenceLevel, report.queueSizeUL);
  unlockState();
}

/* Sets the criteria and starts the reports. False, with a message, when that does not work. */
static bool startReports(void) {
  /* The daemon defines what lists and values mean; these are right for the daemon stand-in. */
  LceReportingCriteria criteria;
  memset(&criteria, 0, sizeof(criteria));
  criteria.firstList[0] = 1000;
  criteria.firstList[1] = 10000;
  criteria.firstList[2] = 100000;
  criteria.firstListCount = 3;
  criteria.criteriaValue1 = 500;
  criteria.accessNetworkType = SDL_ACCESS_NETWORK_TYPE_LTE;

  if (!worked("lceSetReportingCriteria", lceSetReportingCriteria(&criteria, onCriteria)) ||
      !waitForAnswer(&criteriaAnswered, "lceSetReportingCriteria")) {
    return false;
  }
  if (criteriaStatus != LCE_REPORTING_CRITERIA_STATUS_SUCCESS) {
    complain("criteria refused: %s", orbLceReportingCriteriaStatusName(criteriaStatus));
    return false;
  }
  /* Register first, so that no report is missed. */
  return worked("lceRegEstimationReports", lceRegEstimationReports(onReport)) &&
         worked("lcePerformReportingAction(START)",
                lcePerformReportingAction(LCE_REPORTING_ACTION_START));
}

/* Everything between enabling and disabling the service. */
static bool monitor(int seconds) {
  if (!worked("createLceClient", createLceClient(onStatus))) return false;

  /* The reports arrive in onReport() while we wait for the end. */
  bool ok = waitForAnswer(&lce.enabled, "createLceClient") && startReports() &&
            waitForEnd(seconds) &&
            worked("lcePerformReportingAction(STOP)",
                   lcePerformReportingAction(LCE_REPORTING_ACTION_STOP));
  ok = worked("destroySdfClient", destroySdfClient()) && ok;
  return summarize(&lce) && ok; /* no callback runs any more */
}

int main(int argc, char** argv) { return runExample(argc, argv, "lce_monitor", monitor); }
