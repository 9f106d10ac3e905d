// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace golden {

using Bytes = std::vector<uint8_t>;

// What a test saw, written down as the committed files of this folder are: lines of text, and bytes
// in the form of `hexdump -C`. Builds for all platforms have to give the same. Belongs to one
// thread.
class Transcript {
 public:
  // `about` heads the file; it may have several lines.
  explicit Transcript(const std::string& about);

  // Begins a part with a line of its own.
  void part(const std::string& text);
  // A line within the part.
  void line(const std::string& text);
  // Bytes within the part, under a line that ends in their number.
  void bytes(const std::string& text, const Bytes& content);
  const std::string& text() const { return mText; }

 private:
  std::string mText;
};

// As `hexdump -C` prints them: an asterisk stands for lines like the one before.
std::string hexDump(const Bytes& content);

// The text has to be that of this file of the folder; with ORB_GOLDEN_UPDATE in the environment it
// becomes that. ORB_GOLDEN_DIR names the folder where it is not where it was built from.
void expectGolden(const std::string& file, const std::string& text);
std::string goldenPath(const std::string& file);

}  // namespace golden
