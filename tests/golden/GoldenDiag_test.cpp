// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
// Every byte of the diagnostic packet for each kind of record, as the library passes it to the
// platform.
#include <limits>

#include "FixedProcess.h"
#include "LogTestPeer.h"
#include "Transcript.h"

namespace golden {
namespace {

class GoldenDiag : public LogFixture {
 protected:
  GoldenDiag() {
    fixedprocess::begin();
    LogTestPeer::recordDump().setTimerInterval(std::chrono::hours(1));
    recording::setDiagListening(true);
  }

  void say(int level, const std::string& text) {
    log.addLogRecord(level, "T", "folder/File.cpp", "function", 42, "%s", text.c_str());
  }
  static void dumpQueue() {
    const fixedprocess::StillClock clock;
    LogTestPeer::recordDump().dump(Log::USER_COMMAND);
  }
  // The packets since the last call.
  static void add(Transcript& transcript, const std::string& text) {
    transcript.part(text);
    for (const recording::Packet& packet : recording::packets()) {
      EXPECT_EQ(0x1E15, packet.code);
      transcript.bytes("code 1E15", packet.bytes);
    }
    if (recording::packets().empty()) transcript.line("no packet");
    recording::clear();
  }
};

TEST_F(GoldenDiag, Packets) {
  Transcript transcript(
      "Diagnostic packets behind the 12 bytes that the platform puts before them. tests/golden, "
      "GoldenDiag_test\nProcess 1234, thread 1240, 2025-05-24 13:02:07.045 UTC.");
  log.init("golden");
  add(transcript, "set-up of the log: no hook library, version");
  for (int level = 0; level <= 8; ++level) {
    say(level, "text");
    add(transcript, "level " + std::to_string(level));
  }
  say(4, "");
  add(transcript, "no text");
  say(4, "100% \xc3\xa4\xff\t\n");
  add(transcript, "percent, bytes that are no ASCII, controls");
  say(4, std::string(444, 'x') + "last");
  add(transcript, "a record of 511 characters");
  say(4, std::string(1000, 'x'));
  add(transcript, "a line of more than 511 characters");
  log.dMapLog(3, "data");
  add(transcript, "DMAP");
  log.dMapLog(6, std::string(1000, 'x'));
  add(transcript, "DMAP of more than 511 characters");

  LogTestPeer::setDeferred(true);
  say(5, "deferred");
  log.dMapLog(4, "never deferred");
  add(transcript, "deferred mode: the line waits");
  log.printToAdb(6, "T", "File.cpp", "function", 43, "%d", -1);
  add(transcript, "printToAdb: waits always");
  dumpQueue();
  add(transcript, "the dump: what waited");
  LogTestPeer::setDeferred(false);
  dumpQueue();
  add(transcript, "the dump's own line, once nothing is deferred, behind what it had left");

  LogRecord late;
  late.stamp(6);
  late.time.tv_sec = std::numeric_limits<time_t>::max();
  LogTestPeer::recordDump().queueRecord(late, "");
  LogTestPeer::setDeferred(true);  // its own line is deferred
  dumpQueue();
  add(transcript, "a time without a calendar form");
  expectGolden("diag_packets.hex", transcript.text());
}

}  // namespace
}  // namespace golden
