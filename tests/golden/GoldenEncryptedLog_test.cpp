// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
// An encrypted log with a fixed key and fixed random bytes: every byte of the file, and the output
// of its reader.
#include "EncryptedFolder.h"
#include "LogTestPeer.h"

namespace golden {
namespace {

class GoldenEncryptedLog : public LogFixture {
 protected:
  GoldenEncryptedLog() {
    fixedprocess::begin();
    fixedprocess::beginRandom();
    configureEncryption();
  }

  void say(int level, const std::string& text) {
    log.addLogRecord(level, "T", "folder/File.cpp", "function", 42, "%s", text.c_str());
  }
};

TEST_F(GoldenEncryptedLog, File) {
  const std::string path = std::string(kOtherFolder) + "/orb_log_golden_00";
  log.init("golden");
  for (int level = 2; level <= 7; ++level) say(level, "text");
  say(4, "");
  say(4, "100% \xc3\xa4");
  say(4, std::string(1000, 'x'));
  log.dMapLog(3, "data");
  Transcript transcript(
      "An encrypted log file. tests/golden, GoldenEncryptedLog_test\nKey: log_key_public.pem; "
      "session key 00 01 .. 1f; initialization vectors from 80 81 .. on.\nProcess 1234, thread "
      "1240, 2025-05-24 13:02:07.045 UTC; the texts are in encrypted_log.txt.");
  transcript.part("orb_log_golden_00");
  transcript.bytes("header of 512 bytes and records", bytesOf(path));
  expectGolden("encrypted_log.hex", transcript.text());
  expectGolden("encrypted_log.txt", decrypted(path));
}

}  // namespace
}  // namespace golden
