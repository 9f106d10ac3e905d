// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
/*
 * LLE, link latency estimation: how long the radio link delays data in each direction, once on
 * request, or periodically.
 *
 * The usual order: createLleClient(), lleRegEstimationReports(), lleSetReportingCriteria(),
 * reports, destroyLleClient().
 *
 * <orb/sdl.h> has the rules for threads, results, ownership, NULL, fork and signals. They hold for
 * everything here. "LLE is enabled" means: between a successful orb_lle_enable() or
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
  /** The access network of the estimate; "none" for one that this version does not know. */
  SdlAccessNetworkType rat;
} LleEstimationReport;

/**
 * Receives LLE's statuses; registered with orb_lle_enable(), the first generation.
 *
 * @param status  what happened, and on which thread this is called:
 *   STATUS_INTERNAL_ERROR
 *       the daemon sent it: runs on the receiver thread. A request could not be sent: runs on the
 *       worker thread. The library could not be set up when LLE was enabled, or had not been when
 *       it was disabled: runs on the caller's thread before the function returns.
 *   STATUS_SERVICE_UP
 *       the daemon sent it; runs on the receiver thread. The library itself does not report that
 *       the connection exists.
 *   STATUS_SERVICE_DOWN
 *       the daemon sent it, or a connection was lost, LLE's or that of another enabled service:
 *       runs on the receiver thread of the service whose connection was lost. The daemon could not
 *       be reached or refused a connection: runs on the worker thread. LLE stays enabled, and the
 *       next request connects again if necessary. But a daemon that was gone has forgotten
 *       everything: call orb_lle_enable() or createLleClient() again, then make the other requests
 *       again.
 *   any other status
 *       the daemon sent it, as a rule for the latest request; runs on the receiver thread. Treat a
 *       value that you do not know as "something else".
 *
 * A status does not say which request it belongs to. There is no user-data pointer: see point 7 of
 * <orb/sdl.h>. The library holds no lock: the callback may call any function of the library,
 * orb_lle_disable() included. Since 1.0.
 */
typedef void (*LleStatusIndCb)(status_e status);

/**
 * Receives LLE's statuses; registered with createLleClient(), the second generation. It is called
 * for the same reasons and on the same threads as LleStatusIndCb, with one difference: if the
 * library has no worker thread or no descriptor, only this callback is called.
 *
 * @param status  the value named STATUS_V2_X where LleStatusIndCb gets STATUS_X;
 *                STATUS_INVALID_SLOT arrives as STATUS_V2_INVALID.
 *
 * If both generations are in use at the same time, both callbacks are called: LleStatusIndCb first.
 * The library holds no lock: the callback may call any function of the library, destroyLleClient()
 * included. Since 1.0.
 */
typedef void (*LleStatusV2Cb)(status_v2_e status);

/**
 * Receives estimation reports: the answer to lleGetLastEstimationReport(), or each periodic report,
 * according to the function that registered it.
 *
 * @param result  of an answer: 0 the report is valid, 1 it is not. Of a periodic report: always 0,
 *                even if the daemon says that the report is not valid.
 * @param report  the estimate; not NULL. It is valid until the callback returns: copy what you
 *                need later.
 *
 * Threads: runs on the receiver thread. The library holds no lock: the callback may call any
 * function of the library, orb_lle_disable() included. Since 1.0.
 */
typedef void (*LleEstimationReportCb)(int32_t result, const LleEstimationReport* report);

/**
 * Enables LLE, first generation. Point 4 of <orb/sdl.h> has the rules for enable and disable.
 *
 * @param cb  told of every status; not NULL. It must exist until it is replaced or LLE is disabled.
 * @return 1 queued | 0 @p cb is NULL, or the library could not be set up; then @p cb was called
 *         with STATUS_INTERNAL_ERROR. (One exception: if the library has no worker thread or no
 *         descriptor, and a callback of createLleClient() is registered, that callback is called
 *         instead, with STATUS_V2_INTERNAL_ERROR.)
 *
 * Threads: any thread, any callback; it does not wait for the daemon. @p cb runs on the receiver
 * thread or on the worker thread, see LleStatusIndCb. The failure report of this call runs on the
 * caller's thread before the function returns. Since 1.0.
 */
ORB_API int orb_lle_enable(LleStatusIndCb cb);

/**
 * Disables LLE, first generation. Point 4 of <orb/sdl.h> has the rules: how long it takes, and
 * which callbacks still run after it.
 *
 * @return 1 done | 0 LLE is not enabled.
 *
 * Threads: any thread, any callback. Do not hold a lock that a callback of LLE takes. Since 1.0.
 */
ORB_API int orb_lle_disable(void);

/**
 * Enables LLE, second generation: as orb_lle_enable(), with other results and statuses.
 *
 * @param cb  told of every status; not NULL. It must exist until it is replaced or LLE is disabled.
 * @return 0 queued | -1 @p cb is NULL, or the library could not be set up; then @p cb was called
 *         with STATUS_V2_INTERNAL_ERROR.
 *
 * Threads: as orb_lle_enable(). Since 1.0.
 */
ORB_API int createLleClient(LleStatusV2Cb cb);

/**
 * Disables LLE, second generation: as orb_lle_disable(), with other results.
 *
 * @return 0 done | -1 LLE is not enabled.
 *
 * Threads: as orb_lle_disable(). Since 1.0.
 */
ORB_API int destroyLleClient(void);

/**
 * Sets when the daemon is to send periodic estimation reports. Returns at once; the daemon may
 * answer with a status. There is no separate start: the daemon reports according to the criteria.
 *
 * @param criteria  passed on unchanged: the daemon of the platform defines its meaning and unit.
 *                  Every value is accepted.
 * @return 0 queued | -5 LLE is not enabled, or no memory. A refused call changes nothing.
 *
 * Threads: any thread, any callback; it does not wait for the daemon.
 * Since 1.0.
 */
ORB_API int64_t lleSetReportingCriteria(uint32_t criteria);

/**
 * Asks LLE for its latest estimation report. Returns at once; the answer comes through @p cb.
 *
 * @param cb  receives the answer; not NULL. There is one such callback: if several requests wait
 *            for their answers, the callback of the latest gets all of them. It stays registered
 *            after the answer and must exist until the next call replaces it or LLE is disabled.
 * @return 0 queued | -5 LLE is not enabled, or no memory | -2 @p cb is NULL.
 *         A refused call changes nothing.
 *
 * Threads: any thread, any callback; it does not wait for the daemon. @p cb
 * runs on the receiver thread. Since 1.0.
 */
ORB_API int64_t lleGetLastEstimationReport(LleEstimationReportCb cb);

/**
 * Registers the callback for periodic estimation reports. Sends nothing to the daemon: reports come
 * when the daemon sends them, and the library drops them if no callback is registered.
 *
 * @param cb  receives each report; not NULL. It must exist until the next call replaces it
 *            or LLE is disabled. After a replacement, one report may still reach the old callback.
 * @return 0 registered | -5 LLE is not enabled | -2 @p cb is NULL.
 *         A refused call changes nothing.
 *
 * Threads: any thread, any callback. @p cb runs on the receiver thread.
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
