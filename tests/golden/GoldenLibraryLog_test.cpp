// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
// The same through the C API of the shipped library, for lines that are log points with fixed
// numbers: the first packets, the packets of the diagnostic command, and the header and first
// record of the file.
#include <orb/lce.h>

#include <algorithm>

#include "EncryptedFolder.h"
#include "RecordingPlatform.h"

namespace golden {
namespace {

constexpr size_t kHeaderSize = 512;
const std::string kFile = std::string(kOtherFolder) + "/orb_log_GoldenLibraryLog_test_00";

void onStatus(status_e) {}

bool contains(const recording::Packet& packet, const std::string& text) {
  return std::search(packet.bytes.begin(), packet.bytes.end(), text.begin(), text.end()) !=
         packet.bytes.end();
}

// The packet of a line is sent after its record.
bool waitForPacket(const std::string& text) {
  for (size_t wanted = 1;; ++wanted) {
    if (!recording::waitForPackets(wanted)) return false;
    if (contains(recording::packets()[wanted - 1], text)) return true;
  }
}

TEST(GoldenLibraryLog, LogPoints) {
  fixedprocess::begin();
  fixedprocess::beginRandom();
  configureEncryption();
  recording::setDiagListening(true);
  ASSERT_EQ(1, orb_lce_enable(onStatus));  // no daemon, so there is no receiver and no line of one
  ASSERT_EQ(0, recording::callDiagCommand({1, 2, 3}));
  // From then on no thread logs, and the file does not change.
  ASSERT_TRUE(waitForPacket("|Log::dumper:142 "));
  ASSERT_EQ(1, orb_lce_disable());

  Transcript transcript(
      "Log points of the shipped library as diagnostic packets and in an encrypted file. "
      "tests/golden,\nGoldenLibraryLog_test. Key, random source, process and time as in the other "
      "files.");
  for (const char* point :
       {"|Log::init:225 ", "|Log::printVersion:155 ", "|Log::decodeBuff:303 "}) {
    transcript.part(std::string("packet of ") + point);
    for (const recording::Packet& packet : recording::packets()) {
      if (contains(packet, point)) transcript.bytes("code 1E15", packet.bytes);
    }
  }
  Bytes file = bytesOf(kFile);
  ASSERT_GT(file.size(), kHeaderSize + 2);
  const size_t end =
      kHeaderSize + 2 + static_cast<size_t>(file[kHeaderSize] | file[kHeaderSize + 1] << 8);
  ASSERT_GE(file.size(), end);
  // Lines whose numbers depend on the source are later.
  file.resize(end);
  transcript.part("encrypted file");
  transcript.bytes("header and first record", file);
  const std::string lines = decrypted(kFile);
  transcript.line(lines.substr(0, lines.find('\n')));
  expectGolden("library_log.hex", transcript.text());
}

}  // namespace
}  // namespace golden
