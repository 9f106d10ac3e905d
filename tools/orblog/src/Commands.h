// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "orblog/Colour.h"
#include "orblog/KeyFiles.h"
#include "orblog/LinePrinter.h"

// The commands of orblog: their arguments and functions. Each function returns the exit status.
namespace orblog {

struct DecryptRequest {
  std::string key, passphraseFile;
  bool follow = false;
  bool json = false;
  ColourWish colour = ColourWish::Auto;
  std::optional<size_t> lastLines;
  Selection selection;
  std::vector<std::string> files;
};

struct InfoRequest {
  std::string key, passphraseFile;
  std::vector<std::string> files;
};

int runDecrypt(const DecryptRequest& request);
int runInfo(const InfoRequest& request);
int runKeygen(const KeyFilesRequest& request);

// Parses the command line and runs the given command.
int runOrblog(int argc, char** argv);

}  // namespace orblog
