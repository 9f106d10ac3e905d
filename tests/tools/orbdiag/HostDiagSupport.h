// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <diag/diag.h>
#include <dirent.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstdint>
#include <cstring>
#include <fstream>
#include <sstream>
#include <string>

#include "Built.h"
#include "FreshLibrary.h"
#include "UniqueFd.h"

// The desktop's libdiag as a program sees it: loaded as the shared library it is, each time anew.
struct HostDiag {
  template <class Function>
  Function find(const char* symbol) const {
    return reinterpret_cast<Function>(dlsym(library, symbol));
  }
  void put(const std::string& text, uint16_t code = 0x1E15) const {
    auto* const packet = static_cast<uint8_t*>(alloc(code, 528));
    std::memcpy(packet + 16, text.data(), text.size());
    commit(packet);
  }

  void* library = openFresh(built(HOST_LIBDIAG));
  decltype(&Diag_LSM_Init) init = find<decltype(&Diag_LSM_Init)>("Diag_LSM_Init");
  boolean (*deinit)() = find<boolean (*)()>("Diag_LSM_DeInit");
  decltype(&diagpkt_tbl_reg) registerTable = find<decltype(&diagpkt_tbl_reg)>("diagpkt_tbl_reg");
  decltype(&log_status) status = find<decltype(&log_status)>("log_status");
  decltype(&log_alloc) alloc = find<decltype(&log_alloc)>("log_alloc");
  decltype(&log_commit) commit = find<decltype(&log_commit)>("log_commit");
};

// A directory of its own that goes with the test, with what is in it.
class TempDirectory {
 public:
  TempDirectory() { EXPECT_NE(nullptr, mkdtemp(mPath)); }
  TempDirectory(const TempDirectory&) = delete;
  TempDirectory& operator=(const TempDirectory&) = delete;
  ~TempDirectory() {
    if (DIR* const entries = opendir(mPath)) {
      while (const dirent* const entry = readdir(entries)) unlink((*this / entry->d_name).c_str());
      closedir(entries);
    }
    rmdir(mPath);
  }
  std::string operator/(const std::string& name) const { return mPath + ("/" + name); }

 private:
  char mPath[32] = "/tmp/orb-diag-XXXXXX";
};

inline std::string readFile(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  std::stringstream text;
  text << file.rdbuf();
  return text.str();
}

inline bool exists(const std::string& path) {
  struct stat status = {};
  return lstat(path.c_str(), &status) == 0;
}

// A connection to a control socket; -1 in it with errno when there is none to be had.
class ControlClient {
 public:
  explicit ControlClient(const std::string& path)
      : mSocket(socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0)) {
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    path.copy(address.sun_path, sizeof address.sun_path - 1);
    const auto* const name = reinterpret_cast<const sockaddr*>(&address);
    if (connect(mSocket.get(), name, sizeof address) != 0) mSocket.reset();
  }
  bool connected() const { return mSocket.get() >= 0; }
  void ask(const std::string& request) const {
    EXPECT_EQ(static_cast<ssize_t>(request.size()),
              send(mSocket.get(), request.data(), request.size(), MSG_NOSIGNAL));
  }
  // Waits for the reply; empty when the other side has closed.
  std::string reply() const {
    char text[4096];
    const ssize_t size = recv(mSocket.get(), text, sizeof text, 0);
    return std::string(text, size > 0 ? static_cast<size_t>(size) : 0);
  }

 private:
  UniqueFd mSocket;
};

inline std::string ask(const std::string& path, const std::string& request) {
  const ControlClient client(path);
  if (!client.connected()) return "not connected";
  client.ask(request);
  return client.reply();
}
