// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "LogWork.h"

#include <cstdio>

#include "Log.h"
#include "NullPlatform.h"

namespace {

constexpr char kConfigFile[] = "/data/vendor/orb_logs/config/orb_log_config";

// A key without a private half. It is always the same, so that every run does the same work.
constexpr char kPublicKey[] =
    "-----BEGIN PUBLIC KEY-----\n"
    "MIIBIjANBgkqhkiG9w0BAQEFAAOCAQ8AMIIBCgKCAQEAlPPMvVoRQ/ZkMxPQcynG\n"
    "pnaA+4FCIxnN3KpRqbnLG6R5nuU+WeeVwh04tOK0gYPUtINn54wmqFrNL/19Acqn\n"
    "mCQO9iT0c0F6aJcJFLBSjqNkRwgx35oX9mmTiy9IDiZETWP7nVabXNlu1zV5oGFY\n"
    "vlhklQc4AcDghLZqHBqAFw1DkBgMZalu9Z9RKbNBDhJ762EkACiOdYBp0f79H1Ez\n"
    "iUfUX08XOpbYAEYY83IbFijrFMrqhNP0ldSDLTapMP6WcP042dgL8zVUyKP1JeOZ\n"
    "pzt4Vhe4h96lGungtxY1lp/LkRayCLNFPIMzdmpbDluqxfVuX5oSoednKQIpylBe\n"
    "EwIDAQAB\n"
    "-----END PUBLIC KEY-----\n";

}  // namespace

void logwork::setUpAgain(const char* logging, bool listening) {
  Log::getInstance()->release();
  nullplatform::setLogging(logging);
  nullplatform::setListening(listening);
  Log::getInstance()->init("log_bench");
}

bool logwork::configureEncryption() {
  std::FILE* const file = std::fopen(kConfigFile, "wb");
  const unsigned char head[9] = {0x30, 0x75, 0, 0, 0, 0, 0, 0, 3};  // 30000 records in a file
  const bool done = file != nullptr && std::fwrite(head, sizeof head, 1, file) == 1 &&
                    std::fputs(kPublicKey, file) >= 0;
  const bool closed = file != nullptr && std::fclose(file) == 0;
  if (!done || !closed) {
    std::fprintf(stderr, "cannot write %s; run in scripts/sandbox\n", kConfigFile);
  }
  return done && closed;
}
