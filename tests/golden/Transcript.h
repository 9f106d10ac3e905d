// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace golden {

using Bytes = std::vector<uint8_t>;

// A test's results in the format of the committed files of this folder: lines of text, and bytes in
// the format of `hexdump -C`. Builds for all platforms must give the same. Used by one thread.
class Transcript {
 public:
  // `about` is the start of the file; it can have several lines.
  explicit Transcript(const std::string& about);

  // Begins a part with a title line.
  void part(const std::string& text);
  // Adds a line to the part.
  void line(const std::string& text);
  // Adds bytes to the part, after a line that ends with their number.
  void bytes(const std::string& text, const Bytes& content);
  const std::string& text() const { return mText; }

 private:
  std::string mText;
};

// In the format of `hexdump -C`: an asterisk replaces lines that are the same as the line before.
std::string hexDump(const Bytes& content);

// The text must equal this file of the folder. With ORB_GOLDEN_UPDATE in the environment, the file
// is written. ORB_GOLDEN_DIR names the folder if it is not in the place of the build.
void expectGolden(const std::string& file, const std::string& text);
std::string goldenPath(const std::string& file);

}  // namespace golden
