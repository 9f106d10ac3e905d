// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
/*
 * The callbacks of the library only note what happened and wake the application's own thread, which
 * makes all requests. First LCE is enabled; the rest is asked for once the daemon has answered, so
 * that nothing waits in a queue while there is none.
 */
#define _POSIX_C_SOURCE 200809L

#include "link_aware.h"

#include <errno.h>
#include <orb/sdl.h>
#include <pthread.h>
#include <stddef.h>
#include <string.h>
#include <time.h>

#include "breaks.h"

enum {
  ANSWER_MS = 1000, /* after which a daemon is called silent */
  PAUSE_MS = 200,   /* before a daemon that was gone is looked for */
  HIGH_RATE = 10000 /* kbit/s that high quality takes */
};

static struct {
  pthread_mutex_t lock; /* guards the rest */
  pthread_cond_t changed;
  bool stopping;
  bool answered;        /* by LCE's status, since it was last asked */
  bool lost;            /* the daemon, since it was last asked */
  bool criteriaRefused; /* and not asked for anew yet */
  bool criteriaSet;
  LinkView view;
} state;

static pthread_t thread;
static void (*listener)(const LinkView* view);
static pthread_mutex_t telling = PTHREAD_MUTEX_INITIALIZER; /* one view at a time, in order */
static LinkView told;                                       /* guarded by `telling` */

static void lock(void) { pthread_mutex_lock(&state.lock); }

static void unlock(void) {
  pthread_cond_broadcast(&state.changed);
  pthread_mutex_unlock(&state.lock);
}

static bool same(const LinkView* one, const LinkView* other) {
  return one->daemon == other->daemon && one->connections == other->connections &&
         one->refused == other->refused && one->reports == other->reports &&
         one->rate == other->rate && one->highQuality == other->highQuality &&
         one->holding == other->holding;
}

/* Tells the view if it is news. Without the lock of the state. */
static void tell(void) {
  pthread_mutex_lock(&telling);
  lock();
  const LinkView view = state.view;
  unlock();
  if (!same(&view, &told)) {
    told = view;
    listener(&view);
  }
  pthread_mutex_unlock(&telling);
}

/* What the library tells, on threads of its own. */

/* With the lock. An answer to the criteria comes to their callback, or as a status. */
static void noteCriteria(bool accepted) {
  if (accepted || BREAK_refused) {
    state.criteriaSet = true;
  } else {
    state.criteriaRefused = true;
    state.view.refused = true;
  }
}

static void noteStatus(status_v2_e status, bool ofLce) {
  lock();
  if (status == STATUS_V2_SERVICE_DOWN) {
    state.lost = true;
    state.view.daemon = BREAK_absent ? LINK_DAEMON_THERE : LINK_DAEMON_ABSENT;
    state.view.holding = false;
  } else if (ofLce && (status == STATUS_V2_SUCCESS || status == STATUS_V2_SERVICE_UP)) {
    state.answered = true;
  } else if (ofLce && state.answered && !state.criteriaSet) {
    noteCriteria(false);
  }
  unlock();
  tell();
}

static void onLceStatus(status_v2_e status) { noteStatus(status, true); }
static void onLliStatus(status_v2_e status) { noteStatus(status, false); }

static void onCriteria(LceReportingCriteriaStatus status) {
  lock();
  noteCriteria(status == LCE_REPORTING_CRITERIA_STATUS_SUCCESS);
  unlock();
  tell();
}

static void onReport(LceEstimationReportStatus status, LceEstimationReport report) {
  if (status != LCE_ESTIMATION_REPORT_STATUS_SUCCESS) return;
  lock();
  state.view.reports++;
  state.view.rate = report.rate;
  if (!BREAK_rate || report.rate >= HIGH_RATE) state.view.highQuality = report.rate >= HIGH_RATE;
  unlock();
  tell();
}

static void onInterrupt(LliHandoffIndType type, LliPreHandoffState preState,
                        const LliInterruptInfo* info) {
  const bool before = type == LLI_HANDOFF_IND_TYPE_PRE_HANDOFF;
  if (before && preState == LLI_PRE_HANDOFF_STATE_ENTRY) return; /* it may come: not yet */
  lock();
  state.view.holding = !BREAK_handoff && !before &&
                       (info->handoffState == LLI_HANDOFF_STATE_IMMINENT ||
                        info->handoffState == LLI_HANDOFF_STATE_START);
  unlock();
  tell();
}

/* What the application's own thread does. */

/* Waits, with the lock, until `flag`, the daemon's loss, the end, or so many milliseconds. */
static bool waitFor(const bool* flag, int milliseconds) {
  struct timespec deadline;
  clock_gettime(CLOCK_MONOTONIC, &deadline);
  deadline.tv_sec += milliseconds / 1000;
  deadline.tv_nsec += (long)(milliseconds % 1000) * 1000000;
  if (deadline.tv_nsec >= 1000000000) {
    deadline.tv_sec++;
    deadline.tv_nsec -= 1000000000;
  }
  int error = 0;
  while (error != ETIMEDOUT && !state.stopping && !state.lost && !(flag != NULL && *flag)) {
    error = milliseconds > 0 ? pthread_cond_timedwait(&state.changed, &state.lock, &deadline)
                             : pthread_cond_wait(&state.changed, &state.lock);
  }
  return flag != NULL && *flag;
}

/* Whether the daemon answers to the enable of LCE; as long as that takes, unless it is lost. */
static bool findDaemon(void) {
  lock();
  state.answered = state.lost = state.criteriaRefused = state.criteriaSet = false;
  unlock();
  bool found = createLceClient(onLceStatus) == 0;
  lock();
  found = found && waitFor(&state.answered, ANSWER_MS);
  while (!found && !state.lost && !state.stopping) {
    state.view.daemon = LINK_DAEMON_SILENT;
    unlock();
    tell();
    if (BREAK_late) createLceClient(onLceStatus);
    lock();
    found = waitFor(&state.answered, BREAK_late ? 50 : 0);
  }
  if (found) {
    state.view.daemon = LINK_DAEMON_THERE;
    state.view.connections++;
  }
  unlock();
  tell();
  return found;
}

/* Asks for reports: with criteria of ours, or the daemon's own where those are refused. */
static void askForReports(void) {
  LceReportingCriteria criteria;
  memset(&criteria, 0, sizeof criteria);
  criteria.accessNetworkType = SDL_ACCESS_NETWORK_TYPE_LTE;
  criteria.criteriaValue1 = HIGH_RATE;
  lceRegEstimationReports(onReport);
  lceSetReportingCriteria(&criteria, onCriteria);
  lock();
  while (!state.criteriaSet && !state.criteriaRefused && !state.lost && !state.stopping)
    pthread_cond_wait(&state.changed, &state.lock);
  const bool refused = state.criteriaRefused;
  unlock();
  if (refused) {
    memset(&criteria, 0, sizeof criteria);
    lceSetReportingCriteria(&criteria, onCriteria);
  }
  if (!BREAK_reports) lcePerformReportingAction(LCE_REPORTING_ACTION_START);
}

static void* run(void* unused) {
  (void)unused;
  lock();
  while (!state.stopping) {
    unlock();
    if (findDaemon()) {
      createLliClient(onLliStatus);
      lliRegLinkInterruptInd(onInterrupt);
      askForReports();
    }
    lock();
    waitFor(NULL, 0); /* until it is lost */
    if (BREAK_vanish) break;
    state.lost = false;
    waitFor(NULL, PAUSE_MS);
  }
  unlock();
  return NULL;
}

bool linkAwareStart(void (*changed)(const LinkView* view)) {
  memset(&state, 0, sizeof state);
  memset(&told, 0, sizeof told);
  listener = changed;
  pthread_condattr_t attributes;
  pthread_condattr_init(&attributes);
  pthread_condattr_setclock(&attributes, CLOCK_MONOTONIC);
  pthread_mutex_init(&state.lock, NULL);
  pthread_cond_init(&state.changed, &attributes);
  pthread_condattr_destroy(&attributes);
  return pthread_create(&thread, NULL, run, NULL) == 0;
}

void linkAwareStop(void) {
  lock();
  state.stopping = true;
  unlock();
  pthread_join(thread, NULL);
  destroySdfClient(); /* after these no callback runs any more */
  destroyLliClient();
  pthread_cond_destroy(&state.changed);
  pthread_mutex_destroy(&state.lock);
}
