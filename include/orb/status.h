// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
/*
 * Statuses and other values that all services of the library share. Include <orb/sdl.h>, which also
 * states the rules for threads, errors, ownership, fork and signals.
 */
#ifndef ORB_STATUS_H
#define ORB_STATUS_H

#include <stddef.h>
#include <stdint.h>

/** Marks the functions that the shared library exports. */
#if defined(__GNUC__)
#define ORB_API __attribute__((visibility("default")))
#else
#define ORB_API
#endif

/*
 * Every enumeration of this API is a 32-bit signed integer, whatever the compiler would choose. C++
 * and C23 can say so, and clang and gcc 13 let older C say it, too. Where the compiler cannot, the
 * type is int32_t itself: the same size, the same sign, the same in memory and in calls. No
 * enumerator but those that mean something is there in either case, so a switch over all of them is
 * complete.
 */
#if defined(__cplusplus) && __cplusplus < 201103L
#error "the headers of OrbSdlSdk need C99 or C++11"
#endif
#if defined(__clang__) && defined(__has_extension)
#if __has_extension(c_fixed_enum)
#define ORB_HAS_FIXED_ENUM
#endif
#elif defined(__GNUC__) && !defined(__clang__) && __GNUC__ >= 13
#define ORB_HAS_FIXED_ENUM
#endif
#if defined(__cplusplus) || (defined(__STDC_VERSION__) && __STDC_VERSION__ >= 202311L)
#define ORB_EXTENSION
#define ORB_ENUM_INT32 : int32_t
#define ORB_ENUM_TYPE(NAME) enum NAME
#elif defined(ORB_HAS_FIXED_ENUM)
#define ORB_EXTENSION __extension__
#define ORB_ENUM_INT32 : int32_t
#define ORB_ENUM_TYPE(NAME) enum NAME
#else
#define ORB_EXTENSION
#define ORB_ENUM_INT32
#define ORB_ENUM_TYPE(NAME) int32_t
#endif

/* Checks of sizes and offsets; compiled where the language has them (C++11, C11). */
#if defined(__cplusplus) && __cplusplus >= 201103L
#define ORB_STATIC_ASSERT(CONDITION, TEXT) static_assert(CONDITION, TEXT)
#elif defined(__STDC_VERSION__) && __STDC_VERSION__ >= 201112L
#define ORB_STATIC_ASSERT(CONDITION, TEXT) _Static_assert(CONDITION, TEXT)
#endif
/* An application in C++ may have warnings of casts as in C. */
#if defined(__cplusplus)
#define ORB_IS_SIGNED(TYPE) (static_cast<TYPE>(-1) < static_cast<TYPE>(0))
#else
#define ORB_IS_SIGNED(TYPE) ((TYPE)-1 < (TYPE)0)
#endif

/**
 * What a status callback of the first generation (LceStatusIndCb and its like) is given: the
 * outcome of a request that has no callback of its own, or a change of the service's availability.
 * Since 1.0.
 */
ORB_EXTENSION enum status_e ORB_ENUM_INT32 {
  /** The daemon sent no valid status, or one that this version of the library does not know. */
  STATUS_INVALID = -1,
  /** The daemon has done what was asked, for example enabled the service. */
  STATUS_SUCCESS = 0,
  /** The daemon refused a request because of its arguments. */
  STATUS_INVALID_ARG = 1,
  /** The daemon failed, or the library could not queue, connect or send. */
  STATUS_INTERNAL_ERROR = 2,
  /** The daemon or the modem does not offer what was asked. */
  STATUS_NOT_SUPPORTED = 3,
  /** The daemon refused a request that does not fit its present state. */
  STATUS_INVALID_OPERATION = 4,
  /** The daemon announced that the service is available. */
  STATUS_SERVICE_UP = 5,
  /** The service is gone: the daemon said so, closed the connection or could not be reached. */
  STATUS_SERVICE_DOWN = 6,
  /** The daemon refused a request for a slot that does not exist. */
  STATUS_INVALID_SLOT = 7,
  /** Reserved: delivered if the daemon sends it, without meaning so far. */
  STATUS_RESERVED = 8,
};
typedef ORB_ENUM_TYPE(status_e) status_e;

/**
 * What a status callback of the second generation (LceStatusV2Cb and its like) is given. The events
 * are those of status_e; only the numbers differ, and their order is irregular. STATUS_INVALID_SLOT
 * has no number of its own here: it arrives as STATUS_V2_INVALID. Since 1.0.
 */
ORB_EXTENSION enum status_v2_e ORB_ENUM_INT32 {
  /** As STATUS_SUCCESS. */
  STATUS_V2_SUCCESS = 0,
  /** As STATUS_INVALID; also stands for STATUS_INVALID_SLOT and for anything unknown. */
  STATUS_V2_INVALID = -1,
  /** As STATUS_INVALID_ARG. */
  STATUS_V2_INVALID_ARG = -2,
  /** As STATUS_INTERNAL_ERROR. */
  STATUS_V2_INTERNAL_ERROR = -3,
  /** As STATUS_NOT_SUPPORTED. */
  STATUS_V2_NOT_SUPPORTED = -4,
  /** As STATUS_INVALID_OPERATION. */
  STATUS_V2_INVALID_OPERATION = -5,
  /** As STATUS_RESERVED. */
  STATUS_V2_RESERVED = -6,
  /** As STATUS_SERVICE_UP. */
  STATUS_V2_SERVICE_UP = -7,
  /** As STATUS_SERVICE_DOWN. */
  STATUS_V2_SERVICE_DOWN = -8,
};
typedef ORB_ENUM_TYPE(status_v2_e) status_v2_e;

/** The radio access networks that requests and reports speak of. Since 1.0. */
ORB_EXTENSION enum SdlAccessNetworkType ORB_ENUM_INT32 {
  /** No particular access network. */
  SDL_ACCESS_NETWORK_TYPE_NONE = 0,
  /** 3G: WCDMA. */
  SDL_ACCESS_NETWORK_TYPE_WCDMA = 1,
  /** 4G: LTE. */
  SDL_ACCESS_NETWORK_TYPE_LTE = 2,
  /** 5G: New Radio. */
  SDL_ACCESS_NETWORK_TYPE_NR5G = 3,
};
typedef ORB_ENUM_TYPE(SdlAccessNetworkType) SdlAccessNetworkType;

#ifdef ORB_STATIC_ASSERT
ORB_STATIC_ASSERT(sizeof(status_e) == 4, "status_e has 32 bits");
ORB_STATIC_ASSERT(ORB_IS_SIGNED(status_e), "status_e is signed");
ORB_STATIC_ASSERT(sizeof(status_v2_e) == 4, "status_v2_e has 32 bits");
ORB_STATIC_ASSERT(ORB_IS_SIGNED(status_v2_e), "status_v2_e is signed");
ORB_STATIC_ASSERT(sizeof(SdlAccessNetworkType) == 4, "SdlAccessNetworkType has 32 bits");
ORB_STATIC_ASSERT(ORB_IS_SIGNED(SdlAccessNetworkType), "SdlAccessNetworkType is signed");
#endif

#endif /* ORB_STATUS_H */
