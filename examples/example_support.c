// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#define _POSIX_C_SOURCE 200809L

#include "example_support.h"

#include <errno.h>
#include <inttypes.h>
#include <limits.h>
#include <pthread.h>
#include <signal.h>
#include <stdarg.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <time.h>

/* How long the daemon may take for an answer. The library tries to connect for five seconds. */
#define ANSWER_SECONDS 10

static const char* programName;

static struct {
  pthread_mutex_t lock; /* guards the rest, and what the programs put under lockState() */
  pthread_cond_t changed;
  bool failed;      /* a status said that we cannot go on */
  bool interrupted; /* Ctrl-C */
} state = {.lock = PTHREAD_MUTEX_INITIALIZER};

void complain(const char* format, ...) {
  char text[256];
  va_list arguments;
  va_start(arguments, format);
  vsnprintf(text, sizeof(text), format, arguments);
  va_end(arguments);
  fprintf(stderr, "%s: %s\n", programName, text);
}

bool worked(const char* call, int64_t result) {
  if (result < 0) complain("%s failed: %" PRId64, call, result);
  return result >= 0;
}

void lockState(void) { pthread_mutex_lock(&state.lock); }

void unlockState(void) {
  pthread_cond_broadcast(&state.changed);
  pthread_mutex_unlock(&state.lock);
}

void noteStatus(ExampleService* service, status_v2_e status) {
  lockState();
  switch (status) {
    case STATUS_V2_SUCCESS:
    case STATUS_V2_SERVICE_UP:
      if (!service->enabled) printf("%s  enabled\n", service->name);
      service->enabled = true; /* later requests succeed with a status too */
      break;
    case STATUS_V2_SERVICE_DOWN:
      complain("%s: the daemon is not there", service->name);
      state.failed = true;
      break;
    default:
      complain("%s: status %s", service->name, orbStatusV2Name(status));
      state.failed = true;
      break;
  }
  unlockState();
}

int waitUntil(const bool* flag, int seconds) {
  struct timespec deadline;
  clock_gettime(CLOCK_MONOTONIC, &deadline);
  deadline.tv_sec += seconds;
  int error = 0;
  lockState();
  while (error == 0 && !(flag != NULL && *flag)) {
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
  if (flag != NULL && *flag) error = 0; /* it may have come at the last moment */
  unlockState();
  return error;
}

bool waitForAnswer(const bool* flag, const char* call) {
  int error = waitUntil(flag, ANSWER_SECONDS);
  if (error == ETIMEDOUT) complain("no answer to %s in %d s", call, ANSWER_SECONDS);
  return error == 0;
}

bool waitForEnd(int seconds) {
  int error = waitUntil(NULL, seconds);
  return error == ETIMEDOUT || error == EINTR;
}

bool summarize(const ExampleService* service) {
  printf("%s  %lu reports\n", service->name, service->reports);
  return service->reports > 0;
}

/* Waits for Ctrl-C. A thread of its own, because a signal handler may not take a lock. */
static void* waitForSignal(void* signals) {
  int number = 0;
  if (sigwait(signals, &number) == 0) {
    lockState();
    state.interrupted = true;
    unlockState();
  }
  return NULL;
}

/* Prepares what main thread, callbacks and signal thread share. */
static bool prepare(void) {
  /* A monotonic clock: a change of the system time must not change how long we wait. */
  pthread_condattr_t attributes;
  if (pthread_condattr_init(&attributes) != 0 ||
      pthread_condattr_setclock(&attributes, CLOCK_MONOTONIC) != 0 ||
      pthread_cond_init(&state.changed, &attributes) != 0) {
    return false;
  }
  pthread_condattr_destroy(&attributes);

  /* Blocked before any thread starts, so in all of them: only sigwait() sees the signals. */
  static sigset_t signals; /* static: the signal thread reads it until the process ends */
  sigemptyset(&signals);
  sigaddset(&signals, SIGINT);
  sigaddset(&signals, SIGTERM);
  if (pthread_sigmask(SIG_BLOCK, &signals, NULL) != 0) return false;
  pthread_t thread;
  return pthread_create(&thread, NULL, waitForSignal, &signals) == 0 && pthread_detach(thread) == 0;
}

/* Reads the arguments; false when they are wrong. */
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

int runExample(int argc, char** argv, const char* name, bool (*run)(int seconds)) {
  programName = name;
  int seconds;
  if (!readArguments(argc, argv, &seconds)) {
    fprintf(stderr, "Usage: %s [--seconds N]\n", name);
    return 2;
  }
  setvbuf(stdout, NULL, _IOLBF, 0); /* each line at once, into a pipe too */
  if (!prepare()) {
    complain("cannot prepare threads");
    return 1;
  }
  return run(seconds) ? 0 : 1;
}

const char* handoffPhaseName(LliHandoffIndType type, LliPreHandoffState preState,
                             LliHandoffState stage) {
  return type == LLI_HANDOFF_IND_TYPE_PRE_HANDOFF ? orbLliPreHandoffStateName(preState)
                                                  : orbLliHandoffStateName(stage);
}
