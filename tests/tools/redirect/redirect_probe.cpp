// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
//
// A program without redirection code. For each of its connections it prints the server or the
// error.
#include <errno.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstddef>
#include <cstdio>
#include <cstring>
#include <string>

namespace {

void report(const char* name, int domain, const void* address, size_t size) {
  const int fd = socket(domain, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_un peer = {};
  socklen_t length = sizeof peer;
  if (connect(fd, static_cast<const sockaddr*>(address), static_cast<socklen_t>(size)) != 0) {
    std::printf("%s: error %d\n", name, errno);
  } else if (getpeername(fd, reinterpret_cast<sockaddr*>(&peer), &length) == 0) {
    std::printf("%s: %s\n", name, peer.sun_path);
  }
  close(fd);
}

void report(const char* name, const std::string& path, size_t more) {
  sockaddr_un address;
  std::memset(&address, 'x', sizeof address);
  address.sun_family = AF_UNIX;
  std::memcpy(address.sun_path, path.data(), path.size());
  report(name, AF_UNIX, &address, offsetof(sockaddr_un, sun_path) + path.size() + more);
}

}  // namespace

int main() {
  const std::string daemon = "/dev/socket/orb";
  report("with zero", daemon + '\0', 0);
  report("without zero", daemon, 0);
  report("and more", daemon + '\0', 20);
  report("longer", daemon + "2", 0);
  report("shorter", "/dev/socket/or", 0);
  report("abstract", '\0' + daemon, 0);
  sockaddr_in network = {};
  network.sin_family = AF_INET;
  report("network", AF_INET, &network, 2);
  return 0;
}
