// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
/*
 * Which version of the library an application is compiled for, and which one it runs with. The two
 * differ where the library was updated after the application was built; all versions of one SONAME
 * go together.
 */
#ifndef ORB_VERSION_H
#define ORB_VERSION_H

#include <orb/status.h>

#ifdef __cplusplus
extern "C" {
#endif

/** Changes with the SONAME: applications have to be built anew. Since 1.0. */
#define ORB_SDL_SDK_VERSION_MAJOR 1
/** Changes when names or values are added. Since 1.0. */
#define ORB_SDL_SDK_VERSION_MINOR 0
/** Changes when the library is mended. Since 1.0. */
#define ORB_SDL_SDK_VERSION_PATCH 0

/** A version as a number, to be compared with others. Since 1.0. */
#define ORB_SDL_SDK_MAKE_VERSION(MAJOR, MINOR, PATCH) ((MAJOR)*1000000 + (MINOR)*1000 + (PATCH))
/** The version of these headers as a number: for the preprocessor and for comparing. Since 1.0. */
#define ORB_SDL_SDK_VERSION_NUMBER                                               \
  ORB_SDL_SDK_MAKE_VERSION(ORB_SDL_SDK_VERSION_MAJOR, ORB_SDL_SDK_VERSION_MINOR, \
                           ORB_SDL_SDK_VERSION_PATCH)

/** The version of these headers as a text, as orbSdlSdkVersion() gives that of the library.
 * Since 1.0. */
#define ORB_SDL_SDK_VERSION "1.0.0"

/**
 * Gives the version of the library that the application runs with, such as "1.0.0".
 *
 * @return the text, never NULL. It is constant and stays valid until the process ends.
 *
 * Threads: call it from any thread, from any callback, from a signal handler, before the first
 * enable, and in a child made by fork(). It starts nothing, takes no lock and needs no memory.
 * Since 1.0.
 */
ORB_API const char* orbSdlSdkVersion(void);

#ifdef __cplusplus
}
#endif

#endif /* ORB_VERSION_H */
