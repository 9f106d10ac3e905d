// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
/*
 * LLE, link latency estimation: how long the radio link delays data in each direction, once on
 * request or again and again.
 *
 * The usual order: createLleClient(), lleRegEstimationReports(), lleSetReportingCriteria(),
 * reports, destroyLleClient().
 *
 * <orb/sdl.h> states the rules for threads, results, ownership, NULL, fork and signals; they hold
 * for everything here. "LLE is enabled" means: between a successful orb_lle_enable() or
 * createLleClient() and the next orb_lle_disable() or destroyLleClient().
 */
#ifndef ORB_LLE_H
#define ORB_LLE_H

#include <orb/status.h>

#ifdef __cplusplus
extern "C" {
#endif

/**
 * One estimate for both directions. The layout is fixed: 56 bytes with natural alignment of 64-bit
 * members to 8. Since 1.0.
 */
typedef struct LleEstimationReport {
  /** The daemon's status of the uplink values, the low 8 bits of it. */
  uint8_t ulReportStatus;
  /** The estimated uplink latency, in the daemon's unit. */
  uint64_t ulLatencyEstimation;
  /** The variance of the uplink latency, in the daemon's unit. */
  uint64_t ulVarianceEstimation;
  /** The daemon's status of the downlink values, the low 8 bits of it. */
  uint8_t dlReportStatus;
  /** The estimated downlink latency, in the daemon's unit. */
  uint64_t dlLatencyEstimation;
  /** The variance of the downlink latency, in the daemon's unit. */
  uint64_t dlVarianceEstimation;
  /** 1 when the daemon reports at an interval, 0 when it does not; never the interval itself. */
  uint32_t reportInterval;
  /** The access network of the estimate; none for one that this version does not know. */
  SdlAccessNetworkType rat;
} LleEstimationReport;

/**
 * Told about LLE's status by the first generation of the API, orb_lle_enable().
 *
 * @param status  what happened, and on which thread this is called:
 *   STATUS_INTERNAL_ERROR
 *       the daemon sent it: runs on the receiver thread. A request could not be sent: runs on the
 *       worker thread. The library could not start or had no connection object when LLE was enabled
 *       or disabled: runs on the caller's thread before the function returns.
 *   STATUS_SERVICE_UP
 *       the daemon sent it; runs on the receiver thread. That the connection stands is not
 *       reported by itself.
 *   STATUS_SERVICE_DOWN
 *       the daemon sent it, or a connection was lost, LLE's or that of another enabled service:
 *       runs on the receiver thread of the service that it befell. The daemon could not be reached
 *       or turned a connection down: runs on the worker thread. LLE stays enabled and the next
 *       request connects again if need be, but a daemon that was gone has to be told everything
 *       anew: call orb_lle_enable() or createLleClient() once more, then the rest.
 *   any other status
 *       the daemon sent it, as a rule for the latest request; runs on the receiver thread. Treat a
 *       value that you do not know as "something else".
 *
 * Statuses do not say which request they belong to. There is no user-data pointer, see point 7 of
 * <orb/sdl.h>. No library lock is held: the callback may call any function of the library,
 * orb_lle_disable() included. Since 1.0.
 */
typedef void (*LleStatusIndCb)(status_e status);

/**
 * Told about LLE's status by the second generation of the API, createLleClient(). Called for the
 * same reasons and on the same threads as LleStatusIndCb, with one difference: when the library
 * finds no worker thread, this callback is told, and LleStatusIndCb is not.
 *
 * @param status  the value named STATUS_V2_X where LleStatusIndCb gets STATUS_X;
 *                STATUS_INVALID_SLOT arrives as STATUS_V2_INVALID.
 *
 * If both generations are in use at once, both callbacks are called: first LleStatusIndCb, then
 * this. No library lock is held: it may call any function of the library, destroyLleClient()
 * included. Since 1.0.
 */
typedef void (*LleStatusV2Cb)(status_v2_e status);

/**
 * Gets estimation reports: the answer to lleGetLastEstimationReport(), or each periodic report,
 * according to the function that registered it.
 *
 * @param result  of an answer: 0 the report is valid, 1 it is not. Of a periodic report: always 0,
 *                whether the daemon calls the report valid or not.
 * @param report  the estimate; not NULL. It is valid until the callback returns: copy what is
 *                needed later.
 *
 * Threads: runs on the receiver thread. No library lock is held: it may call any function of the
 * library, orb_lle_disable() included. Since 1.0.
 */
typedef void (*LleEstimationReportCb)(int32_t result, const LleEstimationReport* report);

/**
 * Enables LLE: starts the library if need be and asks the daemon to enable the service for this
 * application. Returns at once; the outcome comes through @p cb. When LLE is enabled already, @p cb
 * replaces the callback of the earlier call and the daemon is asked again.
 *
 * orb_lle_enable() and createLleClient() are two generations of one call: they send the same
 * message and differ in the numbers of their statuses and results. Pair each with its own
 * counterpart.
 *
 * @param cb  told of every status; not NULL. It must stay callable until it is replaced or LLE has
 *            been disabled.
 * @return 1 queued | 0 @p cb is NULL, or the library could not be set up, for want of memory or of
 *         a worker thread; then @p cb was called with STATUS_INTERNAL_ERROR, unless there was no
 *         thread and the callback of a createLleClient() is registered: that one alone is told
 *         its value of it.
 *
 * Threads: call it from any thread and from any callback; it does not wait for the daemon. @p cb
 * runs on the receiver thread or on the worker thread, as LleStatusIndCb says; its failure reports
 * of this very call run on the caller's thread before the function returns. Since 1.0.
 */
ORB_API int orb_lle_enable(LleStatusIndCb cb);

/**
 * Disables LLE: tells the daemon if the connection stands, closes the connection, and ends the
 * worker thread if no other service is enabled. Callbacks of both generations are forgotten,
 * unanswered requests are dropped.
 *
 * @return 1 done | 0 LLE is not enabled. Callbacks of an enable or create that could not set the
 *         library up are told STATUS_INTERNAL_ERROR and stay registered.
 *
 * Threads: call it from any thread and from any callback. On a thread of the application it returns
 * within 500 ms, absent or silent daemon included, plus the time that a running callback of LLE
 * still takes; after that no callback of LLE runs any more. Inside a callback it returns at once
 * and the library finishes the rest after the callback. Do not hold a lock that a callback of LLE
 * takes. A failure report runs on the caller's thread before the function returns. Since 1.0.
 */
ORB_API int orb_lle_disable(void);

/**
 * Enables LLE with a status callback of the second generation; otherwise as orb_lle_enable(), which
 * also says why there are two.
 *
 * @param cb  told of every status; not NULL. It must stay callable until it is replaced or LLE has
 *            been disabled.
 * @return 0 queued | -1 @p cb is NULL, or the library could not be set up, for want of
 *         memory or of a worker thread; then @p cb was called with STATUS_V2_INTERNAL_ERROR.
 *
 * Threads: call it from any thread and from any callback; it does not wait for the daemon. @p cb
 * runs on the receiver thread or on the worker thread, as LleStatusIndCb says; the failure report
 * of this very call runs on the caller's thread before the function returns. Since 1.0.
 */
ORB_API int createLleClient(LleStatusV2Cb cb);

/**
 * Disables LLE: the counterpart of createLleClient(), in everything but its results the same as
 * orb_lle_disable().
 *
 * @return 0 done | -1 LLE is not enabled. Callbacks of an enable or create that could not set the
 *         library up are told their value of internal error and stay registered.
 *
 * Threads: as orb_lle_disable(): from any thread and from any callback; within 500 ms plus a
 * running callback's time on a thread of the application, at once inside a callback. Do not hold a
 * lock that a callback of LLE takes. Since 1.0.
 */
ORB_API int destroyLleClient(void);

/**
 * Sets when the daemon is to send periodic estimation reports. Returns at once; the daemon may
 * answer with a status. There is no separate start: the daemon reports according to the criteria.
 *
 * @param criteria  handed on as it is: what it means, and in which unit, is the daemon's to define
 *                  for the platform at hand. Every value is accepted.
 * @return 0 queued | -5 LLE is not enabled, or no memory. A refused call changes nothing.
 *
 * Threads: call it from any thread and from any callback; it does not wait for the daemon.
 * Since 1.0.
 */
ORB_API int64_t lleSetReportingCriteria(uint32_t criteria);

/**
 * Asks LLE for its latest estimation report. Returns at once; the answer comes through @p cb.
 *
 * @param cb  receives the answer; not NULL. There is one such callback: with several requests under
 *            way, the latest one gets all answers. It stays registered after the answer and must
 *            stay callable until the next call replaces it or LLE has been disabled.
 * @return 0 queued | -5 LLE is not enabled, or no memory | -2 @p cb is NULL.
 *         A refused call changes nothing.
 *
 * Threads: call it from any thread and from any callback; it does not wait for the daemon. @p cb
 * runs on the receiver thread. Since 1.0.
 */
ORB_API int64_t lleGetLastEstimationReport(LleEstimationReportCb cb);

/**
 * Registers the callback for periodic estimation reports. The daemon is not told: reports come when
 * it sends them, with or without this; without, they are dropped.
 *
 * @param cb  receives each report; not NULL. It must stay callable until the next call replaces it
 *            or LLE has been disabled. When replaced, one report may still reach the old callback.
 * @return 0 registered | -5 LLE is not enabled, or no memory | -2 @p cb is NULL.
 *         A refused call changes nothing.
 *
 * Threads: call it from any thread and from any callback. @p cb runs on the receiver thread.
 * Since 1.0.
 */
ORB_API int64_t lleRegEstimationReports(LleEstimationReportCb cb);

#ifdef __cplusplus
}
#endif

/* Where 64-bit members are aligned to 8, as on the platform's AArch64, the layout is this one. */
#if defined(ORB_STATIC_ASSERT) && UINTPTR_MAX > 0xffffffffu
#define ORB_LLE_ASSERT_OFFSET(FIELD, OFFSET)                          \
  ORB_STATIC_ASSERT(offsetof(LleEstimationReport, FIELD) == (OFFSET), \
                    "LleEstimationReport." #FIELD " is at " #OFFSET)
ORB_STATIC_ASSERT(sizeof(LleEstimationReport) == 56, "LleEstimationReport has 56 bytes");
ORB_LLE_ASSERT_OFFSET(ulReportStatus, 0);
ORB_LLE_ASSERT_OFFSET(ulLatencyEstimation, 8);
ORB_LLE_ASSERT_OFFSET(ulVarianceEstimation, 16);
ORB_LLE_ASSERT_OFFSET(dlReportStatus, 24);
ORB_LLE_ASSERT_OFFSET(dlLatencyEstimation, 32);
ORB_LLE_ASSERT_OFFSET(dlVarianceEstimation, 40);
ORB_LLE_ASSERT_OFFSET(reportInterval, 48);
ORB_LLE_ASSERT_OFFSET(rat, 52);
#undef ORB_LLE_ASSERT_OFFSET
#endif

#endif /* ORB_LLE_H */
