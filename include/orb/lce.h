// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
/*
 * LCE, link capacity estimation: how much data the radio link can carry at the moment, once on
 * request, or periodically while reporting is started.
 *
 * The usual order: createLceClient(), lceSetReportingCriteria(), lceRegEstimationReports(),
 * lcePerformReportingAction(LCE_REPORTING_ACTION_START), reports, destroySdfClient().
 *
 * <orb/sdl.h> has the rules for threads, results, ownership, NULL, fork and signals. They hold for
 * everything here. "LCE is enabled" means: between a successful orb_lce_enable() or
 * createLceClient() and the next orb_lce_disable() or destroySdfClient().
 */
#ifndef ORB_LCE_H
#define ORB_LCE_H

#include <orb/status.h>

#ifdef __cplusplus
extern "C" {
#endif

/** Room of each list in LceReportingCriteria, in entries. Since 1.0. */
#define LCE_REPORTING_CRITERIA_LIST_MAX 20

/** What lcePerformReportingAction() can do to the periodic reports. Since 1.0. */
ORB_EXTENSION enum LceReportingAction ORB_ENUM_INT32 {
  /** Send no more reports. */
  LCE_REPORTING_ACTION_STOP = 1,
  /** Send reports according to the criteria that were set. */
  LCE_REPORTING_ACTION_START = 2,
  /** Begin again with the criteria that were set. */
  LCE_REPORTING_ACTION_RESET = 3,
};
typedef ORB_ENUM_TYPE(LceReportingAction) LceReportingAction;

/** The daemon's answer to lceSetReportingCriteria(). Since 1.0. */
ORB_EXTENSION enum LceReportingCriteriaStatus ORB_ENUM_INT32 {
  /** The criteria are set. */
  LCE_REPORTING_CRITERIA_STATUS_SUCCESS = 1,
  /** The daemon refused the values. */
  LCE_REPORTING_CRITERIA_STATUS_INVALID_ARGUMENTS = 2,
  /** The daemon refused this kind of criteria together with those already set. */
  LCE_REPORTING_CRITERIA_STATUS_TYPE_MISMATCH = 3,
  /** Any other answer, one without a text included. */
  LCE_REPORTING_CRITERIA_STATUS_OTHER = 4,
};
typedef ORB_ENUM_TYPE(LceReportingCriteriaStatus) LceReportingCriteriaStatus;

/** Whether the values of an LceEstimationReport can be used. Since 1.0. */
ORB_EXTENSION enum LceEstimationReportStatus ORB_ENUM_INT32 {
  /** The report is valid. */
  LCE_ESTIMATION_REPORT_STATUS_SUCCESS = 1,
  /** There is no estimate: no criteria have been set. */
  LCE_ESTIMATION_REPORT_STATUS_CRITERIA_NOT_SET = 2,
  /** Any other answer, one without a text included; do not rely on the values. */
  LCE_ESTIMATION_REPORT_STATUS_OTHER = 3,
};
typedef ORB_ENUM_TYPE(LceEstimationReportStatus) LceEstimationReportStatus;

/** How sure the daemon is of an estimate, in eight steps. Since 1.0. */
ORB_EXTENSION enum LceConfidenceLevel ORB_ENUM_INT32 {
  LCE_CONFIDENCE_LEVEL_L0 = 0, /**< Least sure; also a level that this version does not know. */
  LCE_CONFIDENCE_LEVEL_L1 = 1, /**< Step 1 of 7. */
  LCE_CONFIDENCE_LEVEL_L2 = 2, /**< Step 2 of 7. */
  LCE_CONFIDENCE_LEVEL_L3 = 3, /**< Step 3 of 7. */
  LCE_CONFIDENCE_LEVEL_L4 = 4, /**< Step 4 of 7. */
  LCE_CONFIDENCE_LEVEL_L5 = 5, /**< Step 5 of 7. */
  LCE_CONFIDENCE_LEVEL_L6 = 6, /**< Step 6 of 7. */
  LCE_CONFIDENCE_LEVEL_L7 = 7, /**< Most sure. */
};
typedef ORB_ENUM_TYPE(LceConfidenceLevel) LceConfidenceLevel;

/** The direction that an estimate is about. Since 1.0. */
ORB_EXTENSION enum LceLinkDirection ORB_ENUM_INT32 {
  /** From the device to the network; also a direction that this version does not know. */
  LCE_LINK_DIRECTION_UPLINK = 0,
  /** From the network to the device. */
  LCE_LINK_DIRECTION_DOWNLINK = 1,
};
typedef ORB_ENUM_TYPE(LceLinkDirection) LceLinkDirection;

/**
 * When the daemon is to report. The library passes the lists and values on unchanged. The daemon of
 * the platform defines their meaning and unit. The library does not read entries beyond a list's
 * count. The layout is fixed: 180 bytes. Since 1.0.
 */
typedef struct LceReportingCriteria {
  /** The first list of criteria, in the daemon's units. */
  uint32_t firstList[LCE_REPORTING_CRITERIA_LIST_MAX];
  /** Used entries of firstList, 0 to 20. */
  uint8_t firstListCount;
  /** The second list of criteria, in the daemon's units. */
  uint32_t secondList[LCE_REPORTING_CRITERIA_LIST_MAX];
  /** Used entries of secondList, 0 to 20. */
  uint8_t secondListCount;
  /** The first single criterion, in the daemon's unit. */
  uint32_t criteriaValue1;
  /** The second single criterion, in the daemon's unit. */
  uint32_t criteriaValue2;
  /** The access network that the criteria are for. */
  SdlAccessNetworkType accessNetworkType;
} LceReportingCriteria;

/** One estimate. The layout is fixed: 16 bytes. Since 1.0. */
typedef struct LceEstimationReport {
  /** The estimated capacity of the link, in the daemon's unit. */
  uint32_t rate;
  /** How sure the daemon is of it. */
  LceConfidenceLevel confidenceLevel;
  /** The direction that the estimate is about. */
  LceLinkDirection linkDirection;
  /** How much data waits to be sent in the uplink, in the daemon's unit. */
  uint32_t queueSizeUL;
} LceEstimationReport;

/**
 * Receives LCE's statuses; registered with orb_lce_enable(), the first generation.
 *
 * @param status  what happened, and on which thread this is called:
 *   STATUS_SUCCESS, STATUS_INVALID_ARG, STATUS_NOT_SUPPORTED, STATUS_INVALID_OPERATION,
 *   STATUS_INVALID_SLOT, STATUS_RESERVED, STATUS_INVALID
 *       the daemon sent this status, as a rule for the latest request; runs on the receiver thread.
 *   STATUS_INTERNAL_ERROR
 *       the daemon sent it: runs on the receiver thread. A request could not be sent: runs on the
 *       worker thread. The library could not be set up when LCE was enabled, or had not been when
 *       it was disabled: runs on the caller's thread before the function returns.
 *   STATUS_SERVICE_UP
 *       the daemon sent it; runs on the receiver thread. The library itself does not report that
 *       the connection exists.
 *   STATUS_SERVICE_DOWN
 *       the daemon sent it, or a connection was lost, LCE's or that of another enabled service:
 *       runs on the receiver thread of the service whose connection was lost. The daemon could not
 *       be reached or refused a connection: runs on the worker thread. LCE stays enabled, and the
 *       next request connects again if necessary. But a daemon that was gone has forgotten
 *       everything: call orb_lce_enable() or createLceClient() again, then make the other requests
 *       again.
 *   Treat any other value as "something else".
 *
 * A status does not say which request it belongs to; criteria and reports have callbacks of their
 * own. There is no user-data pointer: see point 7 of <orb/sdl.h>. The library holds no lock: the
 * callback may call any function of the library, orb_lce_disable() included. Since 1.0.
 */
typedef void (*LceStatusIndCb)(status_e status);

/**
 * Receives LCE's statuses; registered with createLceClient(), the second generation. It is called
 * for the same reasons and on the same threads as LceStatusIndCb.
 *
 * @param status  the value named STATUS_V2_X where LceStatusIndCb gets STATUS_X, with these
 *   differences: STATUS_INVALID_SLOT arrives as STATUS_V2_INVALID. If createLceClient() has no
 *   worker thread or no descriptor, this callback is not called; LceStatusIndCb, if one is
 *   registered, is called instead.
 *
 * If both generations are in use at the same time, both callbacks are called: LceStatusIndCb first.
 * The library holds no lock: the callback may call any function of the library, destroySdfClient()
 * included. Since 1.0.
 */
typedef void (*LceStatusV2Cb)(status_v2_e status);

/**
 * Receives the daemon's answer to one lceSetReportingCriteria(). It is called at most once for each
 * accepted request, and never if the daemon does not answer: only the status callback is told of a
 * lost connection. It does not get the transaction id. To tell answers apart, use a function of its
 * own for each request, or make one request at a time.
 *
 * @param status  whether the criteria are set.
 *
 * Threads: runs on the receiver thread, possibly before lceSetReportingCriteria() has returned. The
 * library holds no lock: the callback may call any function of the library. Since 1.0.
 */
typedef void (*LceReportingCriteriaCb)(LceReportingCriteriaStatus status);

/**
 * Receives estimation reports: the answer to lceGetLastEstimationReport(), or each periodic report,
 * according to the function that registered it.
 *
 * @param status  whether @p report can be used.
 * @param report  the estimate, by value; defined, but without meaning if @p status is not
 *                LCE_ESTIMATION_REPORT_STATUS_SUCCESS.
 *
 * Threads: runs on the receiver thread. The library holds no lock: the callback may call any
 * function of the library, orb_lce_disable() included. Since 1.0.
 */
typedef void (*LceEstimationReportCb)(LceEstimationReportStatus status, LceEstimationReport report);

/**
 * Enables LCE, first generation. Point 4 of <orb/sdl.h> has the rules for enable and disable.
 *
 * @param cb  told of every status; not NULL. It must exist until it is replaced or LCE is disabled.
 * @return 1 queued | 0 @p cb is NULL, or the library could not be set up; then @p cb was called
 *         with STATUS_INTERNAL_ERROR.
 *
 * Threads: any thread, any callback; it does not wait for the daemon. @p cb runs on the receiver
 * thread or on the worker thread, see LceStatusIndCb. The failure report of this call runs on the
 * caller's thread before the function returns. Since 1.0.
 */
ORB_API int orb_lce_enable(LceStatusIndCb cb);

/**
 * Disables LCE, first generation. Point 4 of <orb/sdl.h> has the rules: how long it takes, and
 * which callbacks still run after it.
 *
 * @return 1 done | 0 LCE is not enabled.
 *
 * Threads: any thread, any callback. Do not hold a lock that a callback of LCE takes. Since 1.0.
 */
ORB_API int orb_lce_disable(void);

/**
 * Enables LCE, second generation: as orb_lce_enable(), with other results and statuses.
 *
 * @param cb  told of every status; not NULL. It must exist until it is replaced or LCE is disabled.
 * @return 0 queued | -1 @p cb is NULL, or the library could not be set up; then @p cb may have been
 *         called with STATUS_V2_INTERNAL_ERROR, but not in every case: rely on the result.
 *
 * Threads: as orb_lce_enable(). Since 1.0.
 */
ORB_API int createLceClient(LceStatusV2Cb cb);

/**
 * Disables LCE, second generation: as orb_lce_disable(), with other results.
 *
 * The name does not mention LCE. Applications have used it for long, so it stays.
 *
 * @return 0 done | -1 LCE is not enabled.
 *
 * Threads: as orb_lce_disable(). Since 1.0.
 */
ORB_API int destroySdfClient(void);

/**
 * Sets when the daemon is to send periodic estimation reports. Returns at once; the daemon's answer
 * comes through @p cb. Setting criteria does not start the reports.
 *
 * @param criteria  the criteria; not NULL. Counts 0 to 20, access network 0 (none) to 3 (NR5G). The
 *                  library copies it before the function returns.
 * @param cb        receives the answer to this request; not NULL. It must exist until it has been
 *                  called or LCE is disabled.
 * @return 1 to 4294967295 queued, the transaction id: unique among the unanswered requests, in no
 *         particular order | -5 LCE is not enabled, or no memory | -2 a NULL argument, a count
 *         above 20 or an access network outside 0 to 3. A refused call changes nothing.
 *
 * Threads: any thread, any callback; it does not wait for the daemon. @p cb
 * runs on the receiver thread. Since 1.0.
 */
ORB_API int64_t lceSetReportingCriteria(const LceReportingCriteria* criteria,
                                        LceReportingCriteriaCb cb);

/**
 * Asks LCE for its latest estimation report. Returns at once; the answer comes through @p cb.
 *
 * @param cb  receives the answer; not NULL. There is one such callback: if several requests wait
 *            for their answers, the callback of the latest gets all of them. It stays registered
 *            after the answer and must exist until the next call replaces it or LCE is disabled.
 * @return 0 queued | -5 LCE is not enabled, or no memory | -2 @p cb is NULL.
 *         A refused call changes nothing.
 *
 * Threads: any thread, any callback; it does not wait for the daemon. @p cb
 * runs on the receiver thread. Since 1.0.
 */
ORB_API int64_t lceGetLastEstimationReport(LceEstimationReportCb cb);

/**
 * Starts, stops or resets the periodic estimation reports. Returns at once; the daemon may answer
 * with a status. Register for the reports with lceRegEstimationReports() before starting them.
 *
 * @param action  LCE_REPORTING_ACTION_STOP, _START or _RESET.
 * @return 0 queued | -5 LCE is not enabled, or no memory | -2 @p action is none of them.
 *         A refused call changes nothing.
 *
 * Threads: any thread, any callback; it does not wait for the daemon. Reports
 * that the daemon has already sent may still arrive after a stop. Since 1.0.
 */
ORB_API int64_t lcePerformReportingAction(LceReportingAction action);

/**
 * Registers the callback for periodic estimation reports. Sends nothing to the daemon: reports come
 * while reporting is started, and the library drops them if no callback is registered.
 *
 * @param cb  receives each report; not NULL. It must exist until the next call replaces it
 *            or LCE is disabled. After a replacement, one report may still reach the old callback.
 * @return 0 registered | -5 LCE is not enabled | -2 @p cb is NULL.
 *         A refused call changes nothing.
 *
 * Threads: any thread, any callback. @p cb runs on the receiver thread.
 * Since 1.0.
 */
ORB_API int64_t lceRegEstimationReports(LceEstimationReportCb cb);

#ifdef __cplusplus
}
#endif

#ifdef ORB_STATIC_ASSERT
#define ORB_LCE_ASSERT_INT32(TYPE)                            \
  ORB_STATIC_ASSERT(sizeof(TYPE) == 4, #TYPE " has 32 bits"); \
  ORB_STATIC_ASSERT(ORB_IS_SIGNED(TYPE), #TYPE " is signed")
#define ORB_LCE_ASSERT_OFFSET(TYPE, FIELD, OFFSET) \
  ORB_STATIC_ASSERT(offsetof(TYPE, FIELD) == (OFFSET), #TYPE "." #FIELD " is at " #OFFSET)
ORB_LCE_ASSERT_INT32(LceReportingAction);
ORB_LCE_ASSERT_INT32(LceReportingCriteriaStatus);
ORB_LCE_ASSERT_INT32(LceEstimationReportStatus);
ORB_LCE_ASSERT_INT32(LceConfidenceLevel);
ORB_LCE_ASSERT_INT32(LceLinkDirection);
ORB_STATIC_ASSERT(sizeof(LceReportingCriteria) == 180, "LceReportingCriteria has 180 bytes");
ORB_LCE_ASSERT_OFFSET(LceReportingCriteria, firstList, 0);
ORB_LCE_ASSERT_OFFSET(LceReportingCriteria, firstListCount, 80);
ORB_LCE_ASSERT_OFFSET(LceReportingCriteria, secondList, 84);
ORB_LCE_ASSERT_OFFSET(LceReportingCriteria, secondListCount, 164);
ORB_LCE_ASSERT_OFFSET(LceReportingCriteria, criteriaValue1, 168);
ORB_LCE_ASSERT_OFFSET(LceReportingCriteria, criteriaValue2, 172);
ORB_LCE_ASSERT_OFFSET(LceReportingCriteria, accessNetworkType, 176);
ORB_STATIC_ASSERT(sizeof(LceEstimationReport) == 16, "LceEstimationReport has 16 bytes");
ORB_LCE_ASSERT_OFFSET(LceEstimationReport, rate, 0);
ORB_LCE_ASSERT_OFFSET(LceEstimationReport, confidenceLevel, 4);
ORB_LCE_ASSERT_OFFSET(LceEstimationReport, linkDirection, 8);
ORB_LCE_ASSERT_OFFSET(LceEstimationReport, queueSizeUL, 12);
#undef ORB_LCE_ASSERT_INT32
#undef ORB_LCE_ASSERT_OFFSET
#endif

#endif /* ORB_LCE_H */
