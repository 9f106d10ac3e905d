// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
//
// The compiler reads this before each source of what is installed: the C library's calls check the
// sizes that the compiler knows. Not on the command line, because it takes optimisation, which only
// the compiler can tell; because compilers and users who have a level of their own keep it; and
// because the checkers of addresses and threads know the plain calls only.
#ifndef ORB_FORTIFY_H
#define ORB_FORTIFY_H

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define ORB_HAS_CHECKER
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer) || \
    __has_feature(memory_sanitizer)
#define ORB_HAS_CHECKER
#endif
#endif

#if defined(__OPTIMIZE__) && !defined(_FORTIFY_SOURCE) && !defined(ORB_HAS_CHECKER)
#define _FORTIFY_SOURCE ORB_FORTIFY_LEVEL
#endif

#endif
