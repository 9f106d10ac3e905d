// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
// orblog: decrypts the encrypted log files of the client library.
#include "Commands.h"
#include "orbtool/Run.h"

int main(int argc, char** argv) {
  return orbtool::runTool("orblog", [&] { return orblog::runOrblog(argc, argv); });
}
