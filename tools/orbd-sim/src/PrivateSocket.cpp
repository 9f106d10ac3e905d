// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

#include "orbsim/PrivateSocket.h"

#include <stdlib.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <utility>

#include "orbtool/SocketAddress.h"

namespace orbsim {

PrivateSocket::PrivateSocket(std::string path) : mPath(std::move(path)) {
  if (!mPath.empty()) return;
  // The path of a socket is limited; a TMPDIR can be too long.
  const char* const wanted = getenv("TMPDIR");
  if (wanted != nullptr && *wanted == '/' && makeIn(wanted)) return;
  makeIn("/tmp");
}

PrivateSocket::~PrivateSocket() {
  if (!mFolder.empty()) ::rmdir(mFolder.c_str());
}

bool PrivateSocket::makeIn(const std::string& parent) {
  std::string folder = parent + "/orbsim-XXXXXX";
  if (folder.size() + std::strlen("/orb") > orbtool::SocketAddress::kMaxPath) return false;
  if (::mkdtemp(folder.data()) == nullptr) {
    mError = "cannot make a folder in " + parent + ": " + std::strerror(errno);
    return false;
  }
  mFolder = folder;
  mPath = folder + "/orb";
  mError.clear();
  return true;
}

}  // namespace orbsim
