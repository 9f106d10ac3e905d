// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
/*
 * LCE, link capacity estimation: how much data the radio link can carry at the moment, once on
 * request or again and again while reporting is started.
 *
 * The usual order: createLceClient(), lceSetReportingCriteria(), lceRegEstimationReports(),
 * lcePerformReportingAction(LCE_REPORTING_ACTION_START), reports, destroySdfClient().
 *
 * <orb/sdl.h> states the rules for threads, results, ownership, NULL, fork and signals; they hold
 * for everything here. "LCE is enabled" means: between a successful orb_lce_enable() or
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
typedef enum LceReportingAction ORB_ENUM_INT32 {
  /** Send no more reports. */
  LCE_REPORTING_ACTION_STOP = 1,
  /** Send reports according to the criteria that were set. */
  LCE_REPORTING_ACTION_START = 2,
  /** Begin anew with the criteria that were set. */
  LCE_REPORTING_ACTION_RESET = 3,
  ORB_ENUM_FORCE_INT32(LCE_REPORTING_ACTION)
} LceReportingAction;

/** The daemon's answer to lceSetReportingCriteria(). Since 1.0. */
typedef enum LceReportingCriteriaStatus ORB_ENUM_INT32 {
  /** The criteria are set. */
  LCE_REPORTING_CRITERIA_STATUS_SUCCESS = 1,
  /** The daemon refused the values. */
  LCE_REPORTING_CRITERIA_STATUS_INVALID_ARGUMENTS = 2,
  /** The daemon refused this kind of criteria beside those already set. */
  LCE_REPORTING_CRITERIA_STATUS_TYPE_MISMATCH = 3,
  /** Any other answer, one without a text included. */
  LCE_REPORTING_CRITERIA_STATUS_OTHER = 4,
  ORB_ENUM_FORCE_INT32(LCE_REPORTING_CRITERIA_STATUS)
} LceReportingCriteriaStatus;

/** Whether the values of an LceEstimationReport can be used. Since 1.0. */
typedef enum LceEstimationReportStatus ORB_ENUM_INT32 {
  /** The report is valid. */
  LCE_ESTIMATION_REPORT_STATUS_SUCCESS = 1,
  /** There is no estimate: no criteria have been set. */
  LCE_ESTIMATION_REPORT_STATUS_CRITERIA_NOT_SET = 2,
  /** Any other answer, one without a text included; do not rely on the values. */
  LCE_ESTIMATION_REPORT_STATUS_OTHER = 3,
  ORB_ENUM_FORCE_INT32(LCE_ESTIMATION_REPORT_STATUS)
} LceEstimationReportStatus;

/** How sure the daemon is of an estimate, in eight steps; also stands in for unknown values.
 * Since 1.0. */
typedef enum LceConfidenceLevel ORB_ENUM_INT32 {
  LCE_CONFIDENCE_LEVEL_L0 = 0, /**< Least sure; also a level that this version does not know. */
  LCE_CONFIDENCE_LEVEL_L1 = 1, /**< Step 1 of 7. */
  LCE_CONFIDENCE_LEVEL_L2 = 2, /**< Step 2 of 7. */
  LCE_CONFIDENCE_LEVEL_L3 = 3, /**< Step 3 of 7. */
  LCE_CONFIDENCE_LEVEL_L4 = 4, /**< Step 4 of 7. */
  LCE_CONFIDENCE_LEVEL_L5 = 5, /**< Step 5 of 7. */
  LCE_CONFIDENCE_LEVEL_L6 = 6, /**< Step 6 of 7. */
  LCE_CONFIDENCE_LEVEL_L7 = 7, /**< Most sure. */
  ORB_ENUM_FORCE_INT32(LCE_CONFIDENCE_LEVEL)
} LceConfidenceLevel;

/** The direction that an estimate is about. Since 1.0. */
typedef enum LceLinkDirection ORB_ENUM_INT32 {
  /** From the device to the network; also a direction that this version does not know. */
  LCE_LINK_DIRECTION_UPLINK = 0,
  /** From the network to the device. */
  LCE_LINK_DIRECTION_DOWNLINK = 1,
  ORB_ENUM_FORCE_INT32(LCE_LINK_DIRECTION)
} LceLinkDirection;

/**
 * When the daemon is to report. The library hands the lists and values on as they are; what they
 * mean, and in which unit, is the daemon's to define for the platform at hand. Entries beyond a
 * list's count are not read. The layout is fixed: 180 bytes. Since 1.0.
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
  /** What waits to be sent in the uplink, in the daemon's unit. */
  uint32_t queueSizeUL;
} LceEstimationReport;

/**
 * Told about LCE's status by the first generation of the API, orb_lce_enable().
 *
 * @param status  what happened, and on which thread this is called:
 *   STATUS_SUCCESS, STATUS_INVALID_ARG, STATUS_NOT_SUPPORTED, STATUS_INVALID_OPERATION,
 *   STATUS_INVALID_SLOT, STATUS_RESERVED, STATUS_INVALID
 *       the daemon sent this status, as a rule for the latest request; runs on the receiver thread.
 *   STATUS_INTERNAL_ERROR
 *       the daemon sent it: runs on the receiver thread. A request could not be sent: runs on the
 *       worker thread. The library could not start or had no connection object when LCE was enabled
 *       or disabled: runs on the caller's thread before the function returns.
 *   STATUS_SERVICE_UP
 *       the daemon sent it; runs on the receiver thread. That the connection stands is not
 *       reported by itself.
 *   STATUS_SERVICE_DOWN
 *       the daemon sent it, or a connection was lost, LCE's or that of another enabled service:
 *       runs on the receiver thread of the service that it befell. The daemon could not be reached
 *       or turned a connection down: runs on the worker thread. LCE stays enabled and the next
 *       request connects again if need be, but a daemon that was gone has to be told everything
 *       anew: call orb_lce_enable() or createLceClient() once more, then the rest.
 *   Treat any other value as "something else".
 *
 * Statuses do not say which request they belong to; criteria and reports have callbacks of their
 * own. There is no user-data pointer, see point 7 of <orb/sdl.h>. No library lock is held: the
 * callback may call any function of the library, orb_lce_disable() included. Since 1.0.
 */
typedef void (*LceStatusIndCb)(status_e status);

/**
 * Told about LCE's status by the second generation of the API, createLceClient(). Called for the
 * same reasons and on the same threads as LceStatusIndCb.
 *
 * @param status  the value named STATUS_V2_X where LceStatusIndCb gets STATUS_X, with these
 *   differences: STATUS_INVALID_SLOT arrives as STATUS_V2_INVALID; a library that could not reach
 *   its worker thread in createLceClient() reports nothing through this callback (the first
 *   generation's callback, if one is registered, is told instead).
 *
 * If both generations are in use at once, both callbacks are called: first LceStatusIndCb, then
 * this. No library lock is held: it may call any function of the library, destroySdfClient()
 * included. Since 1.0.
 */
typedef void (*LceStatusV2Cb)(status_v2_e status);

/**
 * Gets the daemon's answer to one lceSetReportingCriteria(). Called at most once per accepted
 * request, and never when the daemon does not answer: a lost connection is told to the status
 * callback only. It is not told the transaction id; requests that must be told apart use one
 * function each, or one at a time.
 *
 * @param status  what became of the criteria.
 *
 * Threads: runs on the receiver thread, possibly before lceSetReportingCriteria() has returned. No
 * library lock is held: it may call any function of the library. Since 1.0.
 */
typedef void (*LceReportingCriteriaCb)(LceReportingCriteriaStatus status);

/**
 * Gets estimation reports: the answer to lceGetLastEstimationReport(), or each periodic report,
 * according to the function that registered it.
 *
 * @param status  whether @p report can be used.
 * @param report  the estimate, by value; defined but without meaning when @p status is not
 *                LCE_ESTIMATION_REPORT_STATUS_SUCCESS.
 *
 * Threads: runs on the receiver thread. No library lock is held: it may call any function of the
 * library, orb_lce_disable() included. Since 1.0.
 */
typedef void (*LceEstimationReportCb)(LceEstimationReportStatus status, LceEstimationReport report);

/**
 * Enables LCE: starts the library if need be and asks the daemon to enable the service for this
 * application. Returns at once; the outcome comes through @p cb. When LCE is enabled already, @p cb
 * replaces the callback of the earlier call and the daemon is asked again.
 *
 * orb_lce_enable() and createLceClient() are two generations of one call: they send the same
 * message and differ in the numbers of their statuses and results. Applications written for either
 * stay as they are; new ones may choose, and pair each with its own counterpart.
 *
 * @param cb  told of every status; not NULL. It must stay callable until it is replaced or LCE has
 *            been disabled.
 * @return 1 queued | 0 @p cb is NULL, or the library could not be set up, for want of memory or of
 *         a worker thread; then @p cb was called with STATUS_INTERNAL_ERROR.
 *
 * Threads: call it from any thread and from any callback; it does not wait for the daemon. @p cb
 * runs on the receiver thread or on the worker thread, as LceStatusIndCb says; its failure reports
 * of this very call run on the caller's thread before the function returns. Since 1.0.
 */
ORB_API int orb_lce_enable(LceStatusIndCb cb);

/**
 * Disables LCE: tells the daemon if the connection stands, closes the connection, and ends the
 * worker thread if no other service is enabled. Status and report callbacks of both generations
 * are forgotten, unanswered requests are dropped.
 *
 * @return 1 done | 0 LCE is not enabled. Callbacks of an enable or create that could not set the
 *         library up are told STATUS_INTERNAL_ERROR and stay registered.
 *
 * Threads: call it from any thread and from any callback. On a thread of the application it returns
 * within 500 ms, absent or silent daemon included, plus the time that a running callback of LCE
 * still takes; after that no callback of LCE runs any more. Inside a callback it returns at once
 * and the library finishes the rest after the callback. Do not hold a lock that a callback of LCE
 * takes. A failure report runs on the caller's thread before the function returns. Since 1.0.
 */
ORB_API int orb_lce_disable(void);

/**
 * Enables LCE with a status callback of the second generation; otherwise as orb_lce_enable(), which
 * also says why there are two.
 *
 * @param cb  told of every status; not NULL. It must stay callable until it is replaced or LCE has
 *            been disabled.
 * @return 0 queued | -1 @p cb is NULL, or the library could not be set up, for want of
 *         memory or of a worker thread. @p cb may have been called with STATUS_V2_INTERNAL_ERROR,
 *         but rely on the result: not every such failure is reported.
 *
 * Threads: call it from any thread and from any callback; it does not wait for the daemon. @p cb
 * runs on the receiver thread or on the worker thread, as LceStatusIndCb says; the failure report
 * of this very call runs on the caller's thread before the function returns. Since 1.0.
 */
ORB_API int createLceClient(LceStatusV2Cb cb);

/**
 * Disables LCE: the counterpart of createLceClient(), in everything but its results the same as
 * orb_lce_disable(). (The name does not mention LCE; it has been in use so for long and stays.)
 *
 * @return 0 done | -1 LCE is not enabled. Callbacks of an enable or create that could not set the
 *         library up are told their value of internal error and stay registered.
 *
 * Threads: call it from any thread and from any callback. On a thread of the application it returns
 * within 500 ms, absent or silent daemon included, plus the time that a running callback of LCE
 * still takes; after that no callback of LCE runs any more. Inside a callback it returns at once
 * and the library finishes the rest after the callback. Do not hold a lock that a callback of LCE
 * takes. A failure report runs on the caller's thread before the function returns. Since 1.0.
 */
ORB_API int destroySdfClient(void);

/**
 * Sets when the daemon is to send periodic estimation reports. Returns at once; the daemon's answer
 * comes through @p cb. Setting criteria does not start the reports.
 *
 * @param criteria  the criteria; not NULL. Counts 0 to 20, access network 0 (none) to 3 (NR5G). It
 *                  is copied before the function returns.
 * @param cb        receives the answer to this request; not NULL. It must stay callable until it
 *                  has been called or LCE has been disabled.
 * @return 1 to 4294967295 queued, the transaction id: unique among the unanswered requests, in no
 *         order | -5 LCE is not enabled, or no memory | -2 a NULL argument, a count above 20 or an
 *         access network outside 0 to 3. A refused call changes nothing.
 *
 * Threads: call it from any thread and from any callback; it does not wait for the daemon. @p cb
 * runs on the receiver thread. Since 1.0.
 */
ORB_API int64_t lceSetReportingCriteria(const LceReportingCriteria* criteria,
                                        LceReportingCriteriaCb cb);

/**
 * Asks LCE for its latest estimation report. Returns at once; the answer comes through @p cb.
 *
 * @param cb  receives the answer; not NULL. There is one such callback: with several requests under
 *            way, the latest one gets all answers. It stays registered after the answer and must
 *            stay callable until the next call replaces it or LCE has been disabled.
 * @return 0 queued | -5 LCE is not enabled, or no memory | -2 @p cb is NULL.
 *         A refused call changes nothing.
 *
 * Threads: call it from any thread and from any callback; it does not wait for the daemon. @p cb
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
 * Threads: call it from any thread and from any callback; it does not wait for the daemon. Reports
 * that are under way may still arrive after a stop. Since 1.0.
 */
ORB_API int64_t lcePerformReportingAction(LceReportingAction action);

/**
 * Registers the callback for periodic estimation reports. The daemon is not told: reports come
 * while reporting is started, with or without this; without, they are dropped.
 *
 * @param cb  receives each report; not NULL. It must stay callable until the next call replaces it
 *            or LCE has been disabled. When replaced, one report may still reach the old callback.
 * @return 0 registered | -5 LCE is not enabled, or no memory | -2 @p cb is NULL.
 *         A refused call changes nothing.
 *
 * Threads: call it from any thread and from any callback. @p cb runs on the receiver thread.
 * Since 1.0.
 */
ORB_API int64_t lceRegEstimationReports(LceEstimationReportCb cb);

#ifdef __cplusplus
}
#endif

#ifdef ORB_STATIC_ASSERT
#define ORB_LCE_ASSERT_INT32(TYPE)                            \
  ORB_STATIC_ASSERT(sizeof(TYPE) == 4, #TYPE " has 32 bits"); \
  ORB_STATIC_ASSERT((TYPE)-1 < (TYPE)0, #TYPE " is signed")
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
