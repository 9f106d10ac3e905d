// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
//
// Sends an application to a daemon at another path than the platform's, for machines where nobody
// may make /dev/socket/orb: a connect() that stands before the C library's. Loaded before a program
// (LD_PRELOAD), or inside one that is linked to it, it changes the daemon's address and no other,
// and without ORB_SOCKET nothing at all. The library knows nothing of it.
//
// Of the environment it takes a copy while it is loaded, as the other stand-ins do.
#include <dlfcn.h>
#include <errno.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include <atomic>

#include "Environment.h"
#include "Redirection.h"

namespace {

using Connect = int (*)(int, const sockaddr*, socklen_t);

// Paths stay for good, each once: a thread may be connecting to one that was replaced.
struct Place {
  const char* path;
  Place* next;
};

std::atomic<Connect> following{nullptr};  // the connect() behind this one
std::atomic<const char*> environments{nullptr};
std::atomic<const char*> chosen{nullptr};
std::atomic<Place*> places{nullptr};

Connect followingConnect() {
  Connect found = following.load();
  if (found == nullptr) {
    found = reinterpret_cast<Connect>(dlsym(RTLD_NEXT, "connect"));
    following.store(found);
  }
  return found;
}

const char* kept(const char* path) {
  for (Place* place = places.load(); place != nullptr; place = place->next) {
    if (strcmp(place->path, path) == 0) return place->path;
  }
  auto* const place = static_cast<Place*>(malloc(sizeof(Place)));
  const char* const copy = strdup(path);
  if (place == nullptr || copy == nullptr) abort();  // anything else would be the wrong daemon
  place->path = copy;
  place->next = places.load();
  while (!places.compare_exchange_weak(place->next, place)) {
  }
  return copy;
}

// Here, and not at the first connection: that may be made by a signal handler.
__attribute__((constructor)) void prepare() {
  followingConnect();
  const char* const path = host::variable("ORB_SOCKET");
  if (path == nullptr || *path == '\0') return;
  sockaddr_un address;
  if (host::addressOf(path, address) == 0) {
    fprintf(stderr, "ORB_SOCKET: a socket's path has at most %zu bytes: %s\n",
            sizeof address.sun_path - 1, path);
  }
  environments.store(kept(path));
}

}  // namespace

void host::redirectTo(const char* path) { chosen.store(path != nullptr ? kept(path) : nullptr); }

// Under its assembler name only: the headers' declarations differ between C libraries.
extern "C" {
__attribute__((visibility("default"))) int orbRedirectedConnect(int fd, const sockaddr* address,
                                                                socklen_t size) __asm__("connect");
int orbRedirectedConnect(int fd, const sockaddr* address, socklen_t size) {
  const Connect next = followingConnect();
  if (next == nullptr) {
    errno = ENOSYS;
    return -1;
  }
  const char* path = chosen.load();
  if (path == nullptr) path = environments.load();
  if (path == nullptr || !host::isDaemonSocket(address, size)) return next(fd, address, size);
  sockaddr_un elsewhere;
  size = host::addressOf(path, elsewhere);
  if (size == 0) {
    errno = ENAMETOOLONG;
    return -1;
  }
  return next(fd, reinterpret_cast<const sockaddr*>(&elsewhere), size);
}
}
