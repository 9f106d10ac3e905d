// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

#include "ProcessRedirection.h"

#include <dlfcn.h>
#include <sys/socket.h>

#include <atomic>

#include "Redirection.h"

namespace orbsim::testkit {

namespace {

std::atomic<bool> redirected{false};

// Whether libraries that call connect() use this program's connect().
bool comesFirst() {
  int (*const own)(int, const sockaddr*, socklen_t) = ::connect;
  return dlsym(RTLD_DEFAULT, "connect") == reinterpret_cast<void*>(own);
}

}  // namespace

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
