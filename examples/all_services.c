// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
/*
 * Uses all three services in one process and prints one line per event.
 *
 *   all_services [--seconds N]    until Ctrl-C, or for N seconds of events
 *
 * Exit status: 0 at least one estimate of each service arrived, 1 none of some service arrived or
 * something failed, 2 wrong arguments.
 *
 * The services share the library's worker thread but have a receiver thread each, so callbacks of
 * different services run at the same time. The daemon defines the units; the text is right for the
 * daemon stand-in.
 */
#include <inttypes.h>
#include <stddef.h>
#include <stdio.h>

#include "example_support.h"

/* What the callbacks leave for the main thread. */
static ExampleService lce = {.name = "lce"};
static ExampleService lle = {.name = "lle"};
static ExampleService lli = {.name = "lli"};

static void onLceStatus(status_v2_e status) { noteStatus(&lce, status); }
static void onLleStatus(status_v2_e status) { noteStatus(&lle, status); }
static void onLliStatus(status_v2_e status) { noteStatus(&lli, status); }

static void onCriteria(LceReportingCriteriaStatus status) {
  if (status != LCE_REPORTING_CRITERIA_STATUS_SUCCESS) {
    complain("lce: criteria refused: %s", orbLceReportingCriteriaStatusName(status));
  }
}

static void onCapacity(LceEstimationReportStatus status, LceEstimationReport report) {
  if (status != LCE_ESTIMATION_REPORT_STATUS_SUCCESS) return; /* no estimate: nothing to show */
  lockState();
  lce.reports++;
  printf("lce  %s %.1f Mbit/s, confidence %d of 7\n", orbLceLinkDirectionName(report.linkDirection),
         report.rate / 1000.0, (int)report.confidenceLevel);
  unlockState();
}

static void onLatency(int32_t result, const LleEstimationReport* report) {
  (void)result;
  lockState();
  lle.reports++;
  printf("lle  uplink %.1f ms, downlink %.1f ms, %s\n",
         (double)report->ulLatencyEstimation / 1000.0, (double)report->dlLatencyEstimation / 1000.0,
         orbSdlAccessNetworkTypeName(report->rat));
  unlockState();
}

static void onInterruption(LliHandoffIndType type, LliPreHandoffState preState,
                           const LliInterruptInfo* info) {
  lockState();
  lli.reports++;
  printf("lli  %s to %s: %s", orbLliRatName(info->sourceRat), orbLliRatName(info->targetRat),
         handoffPhaseName(type, preState, info->handoffState));
  if (info->estimatedTimeToInterruption > 0) {
    printf(", interruption in %" PRIu64 " ms", info->estimatedTimeToInterruption);
  }
  printf("\n");
  unlockState();
}

static bool startLce(void) {
  static const LceReportingCriteria criteria = {.accessNetworkType = SDL_ACCESS_NETWORK_TYPE_LTE};
  return worked("lceSetReportingCriteria", lceSetReportingCriteria(&criteria, onCriteria)) &&
         worked("lceRegEstimationReports", lceRegEstimationReports(onCapacity)) &&
         worked("lcePerformReportingAction", lcePerformReportingAction(LCE_REPORTING_ACTION_START));
}

static bool startLle(void) {
  return worked("lleRegEstimationReports", lleRegEstimationReports(onLatency)) &&
         worked("lleSetReportingCriteria", lleSetReportingCriteria(1));
}

static bool startLli(void) {
  return worked("lliRegLinkInterruptInd", lliRegLinkInterruptInd(onInterruption));
}

/* The services have the same kinds of calls, so one table is enough for all. */
static const struct {
  ExampleService* service;
  int (*create)(void (*onStatus)(status_v2_e));
  void (*onStatus)(status_v2_e);
  bool (*start)(void);
  int (*destroy)(void);
} services[] = {
    {&lce, createLceClient, onLceStatus, startLce, destroySdfClient},
    {&lle, createLleClient, onLleStatus, startLle, destroyLleClient},
    {&lli, createLliClient, onLliStatus, startLli, destroyLliClient},
};
static const size_t serviceCount = sizeof(services) / sizeof(services[0]);

static bool watch(int seconds) {
  /*
   * It is not necessary to wait before the first requests: the library queues requests that come
   * before the connection exists, and sends them in order.
   */
  bool ok = true;
  size_t created = 0;
  while (ok && created < serviceCount) {
    ok = services[created].create(services[created].onStatus) == 0;
    if (ok) {
      ok = services[created].start();
      created++;
    } else {
      complain("%s: cannot create the client", services[created].service->name);
    }
  }
  for (size_t i = 0; ok && i < serviceCount; i++) {
    ok = waitForAnswer(&services[i].service->enabled, services[i].service->name);
  }
  ok = ok && waitForEnd(seconds);

  /* This ends the reports, too. With the last service, the library's worker thread ends. */
  while (created > 0) {
    created--;
    if (services[created].destroy() != 0) {
      complain("%s: cannot destroy the client", services[created].service->name);
      ok = false;
    }
  }
  for (size_t i = 0; i < serviceCount; i++) ok = summarize(services[i].service) && ok;
  return ok;
}

int main(int argc, char** argv) { return runExample(argc, argv, "all_services", watch); }
