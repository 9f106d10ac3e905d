// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
/*
 * What the example programs share: arguments, Ctrl-C, the state that callbacks leave for main().
 * Copy this and example_support.c together with a program.
 *
 * The library calls callbacks on threads of its own, those of different services at the same time.
 * The callbacks of the examples only print, note what happened and wake the main thread, which does
 * everything else step by step. One lock guards all that they note.
 */
#ifndef EXAMPLE_SUPPORT_H
#define EXAMPLE_SUPPORT_H

#include <orb/names.h>
#include <orb/sdl.h>
#include <stdbool.h>
#include <stdint.h>

#if defined(__GNUC__)
#define EXAMPLE_PRINTF __attribute__((format(printf, 1, 2)))
#else
#define EXAMPLE_PRINTF
#endif

/* What is known about one service. Guarded by lockState() while callbacks may run. */
typedef struct ExampleService {
  const char* name;      /* for messages; constant */
  bool enabled;          /* the daemon has enabled the service */
  unsigned long reports; /* reports or indications so far */
} ExampleService;

/*
 * The whole of main(): reads "[--seconds N]" (without it: no limit), makes SIGINT and SIGTERM end
 * the waits below, and calls `run`. The result is the exit status: 0 `run` gave true, 1 it did not
 * or could not be called, 2 wrong arguments. `name` is the program's name for messages.
 */
int runExample(int argc, char** argv, const char* name, bool (*run)(int seconds));

/* Prints the program's name and a message to standard error, in one line. */
void complain(const char* format, ...) EXAMPLE_PRINTF;

/* Whether a call of the library succeeded. Prints a message if not: all refusals are negative. */
bool worked(const char* call, int64_t result);

/*
 * The lock of everything that callbacks store. unlockState() wakes the functions below that wait.
 * Do not hold it while you call destroySdfClient() and the like: they wait for callbacks that take
 * it.
 */
void lockState(void);
void unlockState(void);

/*
 * What a status callback of the second generation does: it notes and prints that the service is
 * enabled, or complains and ends the waits below. The callbacks have no user-data pointer, so each
 * service has a small callback of its own that adds the service. Takes the lock.
 */
void noteStatus(ExampleService* service, status_v2_e status);

/*
 * Waits until `*flag`, which the lock guards (NULL: for ever): 0. Otherwise EINTR after Ctrl-C,
 * ECANCELED when a status said that we cannot go on, ETIMEDOUT when `seconds` have passed (0: no
 * limit).
 */
int waitUntil(const bool* flag, int seconds);

/*
 * Waits until a callback has set `flag`, which the lock guards. False when something ended the
 * wait: Ctrl-C, a bad status, or no answer for ten seconds, about which it complains.
 */
bool waitForAnswer(const bool* flag, const char* call);

/*
 * Waits for `seconds` (0: no limit) while the callbacks work. True when the time is over or
 * Ctrl-C came, false when a bad status ended the wait.
 */
bool waitForEnd(int seconds);

/* Prints how many reports came. True when there was at least one. For the time after destroy. */
bool summarize(const ExampleService* service);

/* The name of the state that has a meaning: that of the phase before a handoff, or the handoff's
 * own. */
const char* handoffPhaseName(LliHandoffIndType type, LliPreHandoffState preState,
                             LliHandoffState stage);

#endif /* EXAMPLE_SUPPORT_H */
