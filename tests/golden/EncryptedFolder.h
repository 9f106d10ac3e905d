// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "FixedProcess.h"
#include "Transcript.h"
#include "orblog/Decryption.h"

// The folders of the encrypted log in the sandbox, with this folder's key, and the output of orblog
// for them.
namespace golden {

constexpr char kLogFolder[] = "/data/vendor/orb_logs";
// Files of a program with any name.
constexpr char kOtherFolder[] = "/data/vendor/orb_logs/other";

inline Bytes bytesOf(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return Bytes(std::istreambuf_iterator<char>(file), {});
}

inline void configureEncryption() {
  namespace fs = std::filesystem;
  fs::remove_all(kLogFolder);
  for (const char* name : {"main", "other", "config"})
    fs::create_directories(fs::path(kLogFolder) / name);
  const Bytes key = bytesOf(goldenPath("log_key_public.pem"));
  std::string config = std::string("\xb8\x0b\0\0\0\0\0\0", 8) + '\3';  // 3000 records, 3 files
  config.append(key.begin(), key.end());
  std::ofstream(fs::path(kLogFolder) / "config/orb_log_config", std::ios::binary) << config;
}

// The output of `orblog decrypt`.
inline std::string decrypted(const std::string& path) {
  std::string error;
  const auto key = orblog::PrivateKey::load(goldenPath("log_key_private.pem"), "", error);
  EXPECT_TRUE(key.has_value()) << error;
  if (!key) return error;
  char* text = nullptr;
  size_t size = 0;
  FILE* const out = open_memstream(&text, &size);
  orblog::Console console;
  orblog::LinePrinter printer(out, orblog::LinePrinter::Form::Text, {});
  orblog::Decryption(*key, printer, console).readAll({path}, false);
  EXPECT_TRUE(printer.flush());
  EXPECT_FALSE(console.hadProblem());
  fclose(out);
  const std::string result(text, size);
  free(text);
  return result;
}

}  // namespace golden
