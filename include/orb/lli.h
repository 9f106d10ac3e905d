// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
/*
 * LLI, link interruption indication: when a handoff to another cell or technology will interrupt
 * the radio link, and for how long.
 *
 * The usual order: createLliClient(), lliRegLinkInterruptInd(), indications, destroyLliClient().
 *
 * <orb/sdl.h> has the rules for threads, results, ownership, NULL, fork and signals. They hold for
 * everything here. "LLI is enabled" means: between a successful orb_lli_enable() or
 * createLliClient() and the next orb_lli_disable() or destroyLliClient().
 */
#ifndef ORB_LLI_H
#define ORB_LLI_H

#include <orb/status.h>

#ifdef __cplusplus
extern "C" {
#endif

/** What kind of indication this is; the first one also for unknown values. Since 1.0. */
ORB_EXTENSION enum LliHandoffIndType ORB_ENUM_INT32 {
  /** A handoff may come or was cancelled: LliPreHandoffState says which. */
  LLI_HANDOFF_IND_TYPE_PRE_HANDOFF = 0,
  /** A handoff is under way: LliHandoffState says how far. */
  LLI_HANDOFF_IND_TYPE_HANDOFF = 1,
};
typedef ORB_ENUM_TYPE(LliHandoffIndType) LliHandoffIndType;

/** The phase before a handoff. Has a meaning with LLI_HANDOFF_IND_TYPE_PRE_HANDOFF. Since 1.0. */
ORB_EXTENSION enum LliPreHandoffState ORB_ENUM_INT32 {
  /** The phase has begun; also a state that this version does not know. */
  LLI_PRE_HANDOFF_STATE_ENTRY = 0,
  /** The phase is over. */
  LLI_PRE_HANDOFF_STATE_EXIT = 1,
};
typedef ORB_ENUM_TYPE(LliPreHandoffState) LliPreHandoffState;

/** The stage of a handoff. Has a meaning with LLI_HANDOFF_IND_TYPE_HANDOFF. Since 1.0. */
ORB_EXTENSION enum LliHandoffState ORB_ENUM_INT32 {
  /** The handoff has begun; also what an indication before the handoff carries. */
  LLI_HANDOFF_STATE_START = 0,
  /** The link is on the target. */
  LLI_HANDOFF_STATE_SUCCESS = 1,
  /** The handoff failed. */
  LLI_HANDOFF_STATE_FAILURE = 2,
  /** The handoff is about to begin. */
  LLI_HANDOFF_STATE_IMMINENT = 3,
};
typedef ORB_ENUM_TYPE(LliHandoffState) LliHandoffState;

/** The radio access technology of a bearer. Since 1.0. */
ORB_EXTENSION enum LliRat ORB_ENUM_INT32 {
  LLI_RAT_NULL_BEARER = 0,  /**< No bearer; also a technology that this version does not know. */
  LLI_RAT_3GPP_WCDMA = 1,   /**< 3G: WCDMA. */
  LLI_RAT_3GPP_GERAN = 2,   /**< 2G: GSM and EDGE. */
  LLI_RAT_3GPP_LTE = 3,     /**< 4G: LTE. */
  LLI_RAT_3GPP_TDSCDMA = 4, /**< 3G: TD-SCDMA. */
  LLI_RAT_3GPP_WLAN = 5,    /**< Wireless LAN into a 3GPP core. */
  LLI_RAT_3GPP_5G = 6,      /**< 5G: New Radio. */
  LLI_RAT_3GPP_CIWLAN = 7,  /**< Wireless LAN over cellular data. */
  LLI_RAT_3GPP2_1X = 8,     /**< CDMA2000 1x. */
  LLI_RAT_3GPP2_HRPD = 9,   /**< CDMA2000 high rate packet data. */
  LLI_RAT_3GPP2_EHRPD = 10, /**< CDMA2000 evolved HRPD. */
  LLI_RAT_3GPP2_WLAN = 11,  /**< Wireless LAN into a 3GPP2 core. */
};
typedef ORB_ENUM_TYPE(LliRat) LliRat;

/**
 * One phase of a handoff. The layout is fixed: 32 bytes with natural alignment of 64-bit members
 * to 8. Since 1.0.
 */
typedef struct LliInterruptInfo {
  /** The stage of the handoff. */
  LliHandoffState handoffState;
  /** The bearer before the handoff. */
  LliRat sourceRat;
  /** The bearer after the handoff. */
  LliRat targetRat;
  /** Estimated time until the link is interrupted, in the daemon's unit. */
  uint64_t estimatedTimeToInterruption;
  /** Estimated length of the interruption, in the daemon's unit. */
  uint64_t estimatedInterruptionDuration;
} LliInterruptInfo;

/**
 * Receives LLI's statuses; registered with orb_lli_enable(), the first generation.
 *
 * @param status  what happened, and on which thread this is called:
 *   STATUS_INTERNAL_ERROR
 *       the daemon sent it: runs on the receiver thread. A request could not be sent: runs on the
 *       worker thread. The library could not be set up when LLI was enabled, or had not been when
 *       it was disabled: runs on the caller's thread before the function returns.
 *   STATUS_SERVICE_UP
 *       the daemon sent it; runs on the receiver thread. The library itself does not report that
 *       the connection exists.
 *   STATUS_SERVICE_DOWN
 *       the daemon sent it, or a connection was lost, LLI's or that of another enabled service:
 *       runs on the receiver thread of the service whose connection was lost. The daemon could not
 *       be reached or refused a connection: runs on the worker thread. LLI stays enabled, and the
 *       next request connects again if necessary. But a daemon that was gone has forgotten
 *       everything: call orb_lli_enable() or createLliClient() again, then make the other requests
 *       again.
 *   any other status
 *       the daemon sent it, as a rule for the latest request; runs on the receiver thread. Treat a
 *       value that you do not know as "something else".
 *
 * A status does not say which request it belongs to. There is no user-data pointer: see point 7 of
 * <orb/sdl.h>. The library holds no lock: the callback may call any function of the library,
 * orb_lli_disable() included. Since 1.0.
 */
typedef void (*LliStatusIndCb)(status_e status);

/**
 * Receives LLI's statuses; registered with createLliClient(), the second generation. It is called
 * for the same reasons and on the same threads as LliStatusIndCb, with one difference: if the
 * library has no worker thread or no descriptor, only this callback is called.
 *
 * @param status  the value named STATUS_V2_X where LliStatusIndCb gets STATUS_X;
 *                STATUS_INVALID_SLOT arrives as STATUS_V2_INVALID.
 *
 * If both generations are in use at the same time, both callbacks are called: LliStatusIndCb first.
 * The library holds no lock: the callback may call any function of the library, destroyLliClient()
 * included. Since 1.0.
 */
typedef void (*LliStatusV2Cb)(status_v2_e status);

/**
 * Receives link interruption indications.
 *
 * @param type      whether the indication is about a handoff or about the phase before one.
 * @param preState  the state of the phase before a handoff; without meaning for
 *                  LLI_HANDOFF_IND_TYPE_HANDOFF.
 * @param info      the other values; not NULL. It is valid until the callback returns: copy what
 *                  you need later. Its handoffState is without meaning for
 *                  LLI_HANDOFF_IND_TYPE_PRE_HANDOFF.
 *
 * Threads: runs on the receiver thread. The library holds no lock: the callback may call any
 * function of the library, orb_lli_disable() included. Since 1.0.
 */
typedef void (*LliLinkInterruptIndCb)(LliHandoffIndType type, LliPreHandoffState preState,
                                      const LliInterruptInfo* info);

/**
 * Enables LLI, first generation. Point 4 of <orb/sdl.h> has the rules for enable and disable.
 *
 * @param cb  told of every status; not NULL. It must exist until it is replaced or LLI is disabled.
 * @return 1 queued | 0 @p cb is NULL, or the library could not be set up; then @p cb was called
 *         with STATUS_INTERNAL_ERROR. (One exception: if the library has no worker thread or no
 *         descriptor, and a callback of createLliClient() is registered, that callback is called
 *         instead, with STATUS_V2_INTERNAL_ERROR.)
 *
 * Threads: any thread, any callback; it does not wait for the daemon. @p cb runs on the receiver
 * thread or on the worker thread, see LliStatusIndCb. The failure report of this call runs on the
 * caller's thread before the function returns. Since 1.0.
 */
ORB_API int orb_lli_enable(LliStatusIndCb cb);

/**
 * Disables LLI, first generation. Point 4 of <orb/sdl.h> has the rules: how long it takes, and
 * which callbacks still run after it.
 *
 * @return 1 done | 0 LLI is not enabled.
 *
 * Threads: any thread, any callback. Do not hold a lock that a callback of LLI takes. Since 1.0.
 */
ORB_API int orb_lli_disable(void);

/**
 * Enables LLI, second generation: as orb_lli_enable(), with other results and statuses.
 *
 * @param cb  told of every status; not NULL. It must exist until it is replaced or LLI is disabled.
 * @return 0 queued | -1 @p cb is NULL, or the library could not be set up; then @p cb was called
 *         with STATUS_V2_INTERNAL_ERROR.
 *
 * Threads: as orb_lli_enable(). Since 1.0.
 */
ORB_API int createLliClient(LliStatusV2Cb cb);

/**
 * Disables LLI, second generation: as orb_lli_disable(), with other results.
 *
 * @return 0 done | -1 LLI is not enabled.
 *
 * Threads: as orb_lli_disable(). Since 1.0.
 */
ORB_API int destroyLliClient(void);

/**
 * Registers for link interruption indications: stores the callback and tells the daemon. Returns at
 * once; the daemon may answer with a status.
 *
 * @param cb  receives each indication; not NULL. It must exist until the next call replaces
 *            it or LLI is disabled. After a replacement, one indication may still reach the old
 *            callback.
 * @return 0 queued | -5 LLI is not enabled, or no memory | -2 @p cb is NULL.
 *         A refused call changes nothing.
 *
 * Threads: any thread, any callback; it does not wait for the daemon. @p cb
 * runs on the receiver thread. Since 1.0.
 */
ORB_API int64_t lliRegLinkInterruptInd(LliLinkInterruptIndCb cb);

#ifdef __cplusplus
}
#endif

#ifdef ORB_STATIC_ASSERT
#define ORB_LLI_ASSERT_INT32(TYPE)                            \
  ORB_STATIC_ASSERT(sizeof(TYPE) == 4, #TYPE " has 32 bits"); \
  ORB_STATIC_ASSERT(ORB_IS_SIGNED(TYPE), #TYPE " is signed")
ORB_LLI_ASSERT_INT32(LliHandoffIndType);
ORB_LLI_ASSERT_INT32(LliPreHandoffState);
ORB_LLI_ASSERT_INT32(LliHandoffState);
ORB_LLI_ASSERT_INT32(LliRat);
#undef ORB_LLI_ASSERT_INT32
/* Where 64-bit members are aligned to 8, as on the platform's AArch64, the layout is this one. */
#if UINTPTR_MAX > 0xffffffffu
#define ORB_LLI_ASSERT_OFFSET(FIELD, OFFSET)                       \
  ORB_STATIC_ASSERT(offsetof(LliInterruptInfo, FIELD) == (OFFSET), \
                    "LliInterruptInfo." #FIELD " is at " #OFFSET)
ORB_STATIC_ASSERT(sizeof(LliInterruptInfo) == 32, "LliInterruptInfo has 32 bytes");
ORB_LLI_ASSERT_OFFSET(handoffState, 0);
ORB_LLI_ASSERT_OFFSET(sourceRat, 4);
ORB_LLI_ASSERT_OFFSET(targetRat, 8);
ORB_LLI_ASSERT_OFFSET(estimatedTimeToInterruption, 16);
ORB_LLI_ASSERT_OFFSET(estimatedInterruptionDuration, 24);
#undef ORB_LLI_ASSERT_OFFSET
#endif
#endif

#endif /* ORB_LLI_H */
