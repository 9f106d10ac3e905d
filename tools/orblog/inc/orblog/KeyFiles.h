// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "orblog/KeyFolder.h"

namespace orblog {

// The limits of the library for the values of the configuration file.
constexpr uint64_t kLeastRecords = 3000;
constexpr uint64_t kMostRecords = 30000;
constexpr unsigned kLeastFiles = 3;
constexpr unsigned kMostFiles = 10;

struct KeyFilesRequest {
  std::string directory;
  int bits = 3072;
  uint64_t records = 10000;
  uint8_t files = 5;
  bool force = false;
  std::string passphraseFile;  // empty: the private key is not encrypted
};

// The bytes of the configuration file: records per file (8 bytes, little-endian), number of files
// (1), public key in PEM.
std::vector<uint8_t> makeConfiguration(uint64_t records, uint8_t files,
                                       const std::string& publicKey);

// Makes a key pair and writes the three files, or none of them. False on failure, with a sentence
// in `error`. `notes` gets more information for the user.
bool makeKeyFiles(const KeyFilesRequest& request, std::vector<std::string>& notes,
                  std::string& error);

}  // namespace orblog
