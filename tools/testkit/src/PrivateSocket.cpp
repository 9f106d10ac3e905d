// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

#include "PrivateSocket.h"

#include <dlfcn.h>
#include <stdlib.h>
#include <sys/un.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstring>
#include <utility>

#include "Redirection.h"

namespace orbsim::testkit {

namespace {

std::atomic<bool> redirected{false};

// Whether libraries that call connect() get to this program's own.
bool comesFirst() {
  int (*const own)(int, const sockaddr*, socklen_t) = ::connect;
  return dlsym(RTLD_DEFAULT, "connect") == reinterpret_cast<void*>(own);
}

}  // namespace

PrivateSocket::PrivateSocket(std::string path) : mPath(std::move(path)) {
  if (!mPath.empty()) return;
  // A socket's path is short; that of a folder for temporary files may be too long for one.
  const char* const wanted = getenv("TMPDIR");
  if (wanted != nullptr && *wanted == '/' && makeIn(wanted)) return;
  makeIn("/tmp");
}

PrivateSocket::~PrivateSocket() {
  if (!mFolder.empty()) ::rmdir(mFolder.c_str());
}

bool PrivateSocket::makeIn(const std::string& parent) {
  std::string folder = parent + "/orbsim-XXXXXX";
  if (folder.size() + sizeof "/orb" > sizeof(sockaddr_un::sun_path)) return false;
  if (::mkdtemp(folder.data()) == nullptr) {
    mError = "cannot make a folder in " + parent + ": " + std::strerror(errno);
    return false;
  }
  mFolder = folder;
  mPath = folder + "/orb";
  mError.clear();
  return true;
}

ProcessRedirection::ProcessRedirection(const std::string& path) {
  if (!comesFirst()) {
    mError =
        "another connect() comes before the test kit's: link the program, not a library of "
        "it, with the kit and with -Wl,--export-dynamic-symbol=connect";
    return;
  }
  if (redirected.exchange(true)) {
    mError =
        "another daemon of this process has its connections: stop that first, or set "
        "Settings::redirect to false";
    return;
  }
  mHas = true;
  host::redirectTo(path.c_str());
}

ProcessRedirection::~ProcessRedirection() {
  if (!mHas) return;
  host::redirectTo(nullptr);
  redirected.store(false);
}

}  // namespace orbsim::testkit
