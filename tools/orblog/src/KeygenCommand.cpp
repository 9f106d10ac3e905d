// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
// orblog keygen: makes a key pair and the library's log configuration file.
#include <cstdio>
#include <string>
#include <vector>

#include "Commands.h"
#include "orblog/KeyFiles.h"
#include "orblog/Text.h"
#include "orbtool/Run.h"

namespace orblog {
int runKeygen(const KeyFilesRequest& request) {
  std::vector<std::string> notes;
  std::string error;
  const bool made = makeKeyFiles(request, notes, error);
  for (const std::string& note : notes)
    std::fprintf(stderr, "orblog: %s\n", terminalSafe(note).c_str());
  if (!made) {
    std::fprintf(stderr, "orblog: %s\n", terminalSafe(error).c_str());
    return orbtool::kExitFailed;
  }
  const KeyFiles paths(terminalSafe(request.directory));
  std::printf(
      "%s\n  The private key. Keep it from the device and safe: it alone opens the logs.\n"
      "%s\n  The public key.\n"
      "%s\n  Put it on the device as /data/vendor/orb_logs/config/orb_log_config and start the\n"
      "  application anew. To read the logs:\n"
      "  orblog decrypt --key %s /data/vendor/orb_logs\n",
      paths.privateKey.c_str(), paths.publicKey.c_str(), paths.configuration.c_str(),
      paths.privateKey.c_str());
  return orbtool::kExitDone;
}

}  // namespace orblog
