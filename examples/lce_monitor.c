// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
/*
 * Shows the capacity of the radio link as the LCE service estimates it.
 *
 *   lce_monitor [--seconds N]    until Ctrl-C, or for N seconds of reports
 *
 * Exit status: 0 at least one report arrived, 1 none arrived or something failed, 2 wrong
 * arguments.
 *
 * How it works: the library calls the callbacks below on threads of its own. They only note what
 * happened in `state` and wake the main thread, which does everything else step by step.
 */
#define _POSIX_C_SOURCE 200809L

#include <errno.h>
#include <inttypes.h>
#include <limits.h>
#include <orb/sdl.h>
#include <pthread.h>
#include <signal.h>
#include <stdbool.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <time.h>

/* How long the daemon may take for an answer. The library tries to connect for five seconds. */
#define ANSWER_SECONDS 10

/* What the callbacks have seen. They have no user-data pointer: static variables are the way. */
static struct {
  pthread_mutex_t lock; /* guards all below */
  pthread_cond_t changed;
  bool enabled;                              /* the daemon has enabled LCE */
  bool failed;                               /* a status said that we cannot go on */
  bool interrupted;                          /* Ctrl-C */
  LceReportingCriteriaStatus criteriaStatus; /* 0: no answer yet */
  unsigned long reports;                     /* reports printed so far */
} state = {.lock = PTHREAD_MUTEX_INITIALIZER};

/* Tells the daemon's statuses apart. Runs on the receiver thread or on the worker thread. */
static void onStatus(status_v2_e status) {
  pthread_mutex_lock(&state.lock);
  switch (status) {
    case STATUS_V2_SUCCESS:
    case STATUS_V2_SERVICE_UP:
      state.enabled = true;
      break;
    case STATUS_V2_SERVICE_DOWN:
      fprintf(stderr, "lce_monitor: the daemon is not there\n");
      state.failed = true;
      break;
    default:
      fprintf(stderr, "lce_monitor: LCE reports status %d\n", (int)status);
      state.failed = true;
      break;
  }
  pthread_cond_broadcast(&state.changed);
  pthread_mutex_unlock(&state.lock);
}

/* Gets the answer to lceSetReportingCriteria(). Runs on the receiver thread. */
static void onCriteria(LceReportingCriteriaStatus status) {
  pthread_mutex_lock(&state.lock);
  state.criteriaStatus = status;
  pthread_cond_broadcast(&state.changed);
  pthread_mutex_unlock(&state.lock);
}

/* Gets every estimation report. Runs on the receiver thread. */
static void onReport(LceEstimationReportStatus status, LceEstimationReport report) {
  if (status != LCE_ESTIMATION_REPORT_STATUS_SUCCESS) {
    fprintf(stderr, "lce_monitor: no estimate (status %d)\n", (int)status);
    return;
  }
  pthread_mutex_lock(&state.lock);
  state.reports++;
  printf("report %lu: %s, rate %" PRIu32 ", confidence %d of 7, uplink queue %" PRIu32 "\n",
         state.reports, report.linkDirection == LCE_LINK_DIRECTION_DOWNLINK ? "downlink" : "uplink",
         report.rate, (int)report.confidenceLevel, report.queueSizeUL);
  fflush(stdout);
  pthread_mutex_unlock(&state.lock);
}

/* Waits for Ctrl-C. A thread of its own, because a signal handler may not take a lock. */
static void* waitForSignal(void* signals) {
  int number = 0;
  if (sigwait(signals, &number) == 0) {
    pthread_mutex_lock(&state.lock);
    state.interrupted = true;
    pthread_cond_broadcast(&state.changed);
    pthread_mutex_unlock(&state.lock);
  }
  return NULL;
}

static bool isEnabled(void) { return state.enabled; }
static bool isCriteriaAnswered(void) { return state.criteriaStatus != 0; }
static bool isNever(void) { return false; }

/*
 * Waits until `done` holds: 0. Otherwise EINTR after Ctrl-C, ECANCELED when a status said that we
 * cannot go on, ETIMEDOUT when `seconds` have passed (0: no limit).
 */
static int waitUntil(bool (*done)(void), int seconds) {
  struct timespec deadline;
  clock_gettime(CLOCK_MONOTONIC, &deadline);
  deadline.tv_sec += seconds;
  int error = 0;
  pthread_mutex_lock(&state.lock);
  while (!done() && error == 0) {
    if (state.interrupted) {
      error = EINTR;
    } else if (state.failed) {
      error = ECANCELED;
    } else if (seconds > 0) {
      error = pthread_cond_timedwait(&state.changed, &state.lock, &deadline);
    } else {
      error = pthread_cond_wait(&state.changed, &state.lock);
    }
  }
  if (done()) error = 0;
  pthread_mutex_unlock(&state.lock);
  return error;
}

/* Waits for an answer of the daemon and says so when none comes. */
static bool waitForAnswer(bool (*done)(void), const char* what) {
  int error = waitUntil(done, ANSWER_SECONDS);
  if (error == ETIMEDOUT) {
    fprintf(stderr, "lce_monitor: no answer to %s in %d s\n", what, ANSWER_SECONDS);
  }
  return error == 0;
}

/* Sets the criteria and starts the reports. False, with a message, when that does not work. */
static bool startReports(void) {
  /* What lists and values mean is the daemon's to define; these suit the daemon stand-in. */
  LceReportingCriteria criteria;
  memset(&criteria, 0, sizeof(criteria));
  criteria.firstList[0] = 1000;
  criteria.firstList[1] = 10000;
  criteria.firstList[2] = 100000;
  criteria.firstListCount = 3;
  criteria.criteriaValue1 = 500;
  criteria.accessNetworkType = SDL_ACCESS_NETWORK_TYPE_LTE;

  int64_t id = lceSetReportingCriteria(&criteria, onCriteria);
  if (id < 0) {
    fprintf(stderr, "lce_monitor: lceSetReportingCriteria: %" PRId64 "\n", id);
    return false;
  }
  if (!waitForAnswer(isCriteriaAnswered, "lceSetReportingCriteria")) return false;
  if (state.criteriaStatus != LCE_REPORTING_CRITERIA_STATUS_SUCCESS) {
    fprintf(stderr, "lce_monitor: criteria refused (status %d)\n", (int)state.criteriaStatus);
    return false;
  }

  /* Register first, so that no report is missed. */
  int64_t result = lceRegEstimationReports(onReport);
  if (result != 0) {
    fprintf(stderr, "lce_monitor: lceRegEstimationReports: %" PRId64 "\n", result);
    return false;
  }
  result = lcePerformReportingAction(LCE_REPORTING_ACTION_START);
  if (result != 0) {
    fprintf(stderr, "lce_monitor: lcePerformReportingAction(START): %" PRId64 "\n", result);
    return false;
  }
  return true;
}

/* Everything between enabling and disabling the service. */
static bool monitor(int seconds) {
  if (createLceClient(onStatus) != 0) {
    fprintf(stderr, "lce_monitor: cannot create the LCE client\n");
    return false;
  }

  bool ok = waitForAnswer(isEnabled, "createLceClient") && startReports();
  if (ok) {
    int end = waitUntil(isNever, seconds); /* the reports arrive in onReport() */
    ok = end == ETIMEDOUT || end == EINTR;
    int64_t result = lcePerformReportingAction(LCE_REPORTING_ACTION_STOP);
    if (result != 0) {
      fprintf(stderr, "lce_monitor: lcePerformReportingAction(STOP): %" PRId64 "\n", result);
      ok = false;
    }
  }

  /* No lock is held here: the call waits for a callback that is still running. */
  if (destroySdfClient() != 0) {
    fprintf(stderr, "lce_monitor: cannot destroy the LCE client\n");
    ok = false;
  }
  return ok; /* from here on no callback runs */
}

/* Prepares what main thread, callbacks and signal thread share. */
static bool prepare(sigset_t* signals) {
  /* A monotonic clock, so that nobody who sets the time changes how long we wait. */
  pthread_condattr_t attributes;
  if (pthread_condattr_init(&attributes) != 0 ||
      pthread_condattr_setclock(&attributes, CLOCK_MONOTONIC) != 0 ||
      pthread_cond_init(&state.changed, &attributes) != 0) {
    return false;
  }
  pthread_condattr_destroy(&attributes);

  /* Blocked in every thread, so that only sigwait() sees them. */
  sigemptyset(signals);
  sigaddset(signals, SIGINT);
  sigaddset(signals, SIGTERM);
  if (pthread_sigmask(SIG_BLOCK, signals, NULL) != 0) return false;
  pthread_t thread;
  return pthread_create(&thread, NULL, waitForSignal, signals) == 0 && pthread_detach(thread) == 0;
}

/* Reads the arguments; false when they are wrong. No limit is 0 seconds. */
static bool readArguments(int argc, char** argv, int* seconds) {
  *seconds = 0;
  if (argc == 1) return true;
  if (argc != 3 || strcmp(argv[1], "--seconds") != 0) return false;
  char* end = NULL;
  errno = 0;
  long value = strtol(argv[2], &end, 10);
  if (errno != 0 || end == argv[2] || *end != '\0' || value < 1 || value > INT_MAX) return false;
  *seconds = (int)value;
  return true;
}

int main(int argc, char** argv) {
  int seconds;
  if (!readArguments(argc, argv, &seconds)) {
    fprintf(stderr, "Usage: lce_monitor [--seconds N]\n");
    return 2;
  }
  static sigset_t signals; /* static: the signal thread reads it until the process ends */
  if (!prepare(&signals)) {
    fprintf(stderr, "lce_monitor: cannot prepare threads\n");
    return 1;
  }
  bool ok = monitor(seconds);
  printf("%lu reports\n", state.reports);
  return ok && state.reports > 0 ? 0 : 1;
}
