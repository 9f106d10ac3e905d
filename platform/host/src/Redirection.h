// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <stddef.h>
#include <string.h>
#include <sys/socket.h>
#include <sys/un.h>

// Another place for the daemon's socket: what applications connect to is looked at on its way into
// the system. Nothing of the C++ runtime, so that any program can load what is made of it.
namespace host {

// Where applications look for the daemon.
constexpr char kDaemonSocket[] = "/dev/socket/orb";

// Whether @p address is the daemon's. The path in it need not end with a zero.
inline bool isDaemonSocket(const sockaddr* address, socklen_t size) {
  constexpr size_t kHead = offsetof(sockaddr_un, sun_path);
  constexpr size_t kLength = sizeof kDaemonSocket - 1;
  if (address == nullptr || size < kHead + kLength || size > sizeof(sockaddr_un)) return false;
  if (address->sa_family != AF_UNIX) return false;
  const char* const path = reinterpret_cast<const char*>(address) + kHead;
  return memcmp(path, kDaemonSocket, kLength) == 0 &&
         (size == kHead + kLength || path[kLength] == '\0');
}

// Makes @p elsewhere the address of @p path and gives its size; 0 when the path is too long for
// one.
inline socklen_t addressOf(const char* path, sockaddr_un& elsewhere) {
  const size_t length = strlen(path);
  if (length >= sizeof elsewhere.sun_path) return 0;
  elsewhere = {};
  elsewhere.sun_family = AF_UNIX;
  memcpy(elsewhere.sun_path, path, length);
  return static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + length + 1);
}

// From now on this program's connections to the daemon go to @p path; null: to where the
// environment says, else to the daemon. The path is copied and stays. Any thread; what connects
// meanwhile goes to either place. Defined in redirect.cpp.
void redirectTo(const char* path);

}  // namespace host
