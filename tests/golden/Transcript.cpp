// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "Transcript.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>

namespace golden {
namespace {

constexpr size_t kWidth = 16;

std::string offset(size_t at) {
  char text[16];
  std::snprintf(text, sizeof text, "%08x", static_cast<unsigned>(at));
  return text;
}

std::string dumpLine(size_t at, const uint8_t* bytes, size_t count) {
  std::string line = offset(at) + ' ';
  std::string characters;
  for (size_t i = 0; i < kWidth; ++i) {
    char text[8] = "   ";
    if (i < count) std::snprintf(text, sizeof text, " %02x", bytes[i]);
    if (i == kWidth / 2) line += ' ';
    line += text;
    if (i < count)
      characters += bytes[i] >= 0x20 && bytes[i] < 0x7f ? static_cast<char>(bytes[i]) : '.';
  }
  return line + "  |" + characters + "|\n";
}

std::string contentOf(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(file), {});
}

}  // namespace

Transcript::Transcript(const std::string& about) {
  mText = "# ";
  for (const char c : about) mText += c == '\n' ? std::string("\n# ") : std::string(1, c);
  mText += '\n';
}

void Transcript::part(const std::string& text) { mText += '\n' + text + '\n'; }

void Transcript::line(const std::string& text) { mText += "  " + text + '\n'; }

void Transcript::bytes(const std::string& text, const Bytes& content) {
  line(text + ", " + std::to_string(content.size()) + " bytes");
  mText += hexDump(content);
}

std::string hexDump(const Bytes& content) {
  std::string dump;
  bool repeats = false;
  for (size_t at = 0; at < content.size(); at += kWidth) {
    const size_t count = std::min(kWidth, content.size() - at);
    const uint8_t* const bytes = content.data() + at;
    if (at > 0 && count == kWidth && std::equal(bytes, bytes + kWidth, bytes - kWidth)) {
      if (!repeats) dump += "*\n";
      repeats = true;
    } else {
      dump += dumpLine(at, bytes, count);
      repeats = false;
    }
  }
  return dump + offset(content.size()) + '\n';
}

std::string goldenPath(const std::string& file) {
  const char* const folder = std::getenv("ORB_GOLDEN_DIR");
  return std::string(folder != nullptr ? folder : ORB_GOLDEN_FOLDER) + '/' + file;
}

void expectGolden(const std::string& file, const std::string& text) {
  const std::string path = goldenPath(file);
  if (std::getenv("ORB_GOLDEN_UPDATE") != nullptr) {
    std::ofstream(path, std::ios::binary) << text;
  }
  EXPECT_EQ(contentOf(path), text) << path << " says something else; see docs/testing.md";
}

}  // namespace golden
