// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <gtest/gtest.h>

#include <algorithm>

#include "OrblogFiles.h"
#include "orblog/LogParser.h"

namespace orblogtest {

using namespace orblog;

// A header in these tests is 0xAB and the plain session key, so that no RSA is needed.
inline Bytes headerOf(const Key& key) {
  Bytes header(512);
  header[0] = 0xAB;
  std::copy(key.begin(), key.end(), header.begin() + 1);
  return header;
}

class OrblogParser : public testing::Test {
 protected:
  std::optional<size_t> openHeader(ByteView header) {
    const ByteView rest = header.from(1 + SessionKey::kSize);
    const bool filled =
        std::all_of(rest.data, rest.data + rest.size, [](uint8_t byte) { return byte == 0; });
    if (header.data[0] != 0xAB || !filled) return std::nullopt;
    SessionKey key;
    std::copy_n(header.data + 1, key.bytes.size(), key.bytes.begin());
    return ring.add(key, "this file");
  }
  HeaderOpener opener() {
    return [this](ByteView header) { return openHeader(header); };
  }
  void addKey(const Key& bytes, const std::string& origin) {
    SessionKey key;
    key.bytes = bytes;
    ring.add(key, origin);
  }
  // Parses the file in pieces of this size.
  void parse(const Bytes& bytes, size_t piece = 1 << 20) {
    LogParser parser(ring, opener());
    for (size_t at = 0; at < bytes.size(); at += piece)
      parser.feed({bytes.data() + at, std::min(piece, bytes.size() - at)}, out);
    parser.finish(out);
  }
  std::vector<std::string> texts() const {
    std::vector<std::string> all;
    for (const Record& record : out.records) all.push_back(record.text);
    return all;
  }
  std::vector<std::string> findings() const {
    std::vector<std::string> all;
    for (const Finding& finding : out.findings) all.push_back(finding.text());
    return all;
  }
  bool hasProblem() const {
    return std::any_of(out.findings.begin(), out.findings.end(),
                       [](const Finding& finding) { return finding.isProblem(); });
  }
  // A file with three records of 100, 200 and 300 bytes of text: at 512, 642, 872, end 1202.
  Bytes threeRecords() {
    Bytes file = headerOf(keyOf(1));
    file += sealer.record(first);
    file += sealer.record(second);
    file += sealer.record(third);
    return file;
  }

  using Texts = std::vector<std::string>;
  const std::string first = std::string(100, 'a'), second = std::string(200, 'b'),
                    third = std::string(300, 'c');
  KeyRing ring;
  Sealer sealer{keyOf(1)};
  Sealer other{keyOf(2), 0xEE};
  Parsed out;
};

}  // namespace orblogtest
