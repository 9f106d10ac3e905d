// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

#include <new>
#include <string>

#include "Log.h"
#include "LogTag.h"
#include "RecordingPlatform.h"

// What tests may read and set inside the process's log. Its parts have public functions.
struct LogTestPeer {
  static Log& log() { return *Log::getInstance(); }
  static RecordDump& recordDump() { return log().recordDump; }
  static EncryptedLog& encryptedLog() { return log().encryptedLog; }
  static bool encryptionEnabled() {
    const LockGuard lock(log().mutex);
    return log().encryptedLog.isEnabled();
  }
  // The mutex that every record locks. For a test in which a thread stays inside a log call.
  static Mutex& mutex() { return log().mutex; }
  // Whether the calling thread is inside the log.
  static bool isWriting() { return Log::Writer::isHere(); }
  static bool initialised() {
    const LockGuard lock(log().lifecycleMutex);
    return log().initialised;
  }
  static bool logPermsEnabled() { return log().logPermsEnabled; }
  static void setDeferred(bool deferred) { log().deferredLogging = deferred; }
  static void* hookLibrary() { return Log::_libalog_handle; }
  static bool hasGetPersistSetting() { return Log::orbGetPersistSetting != nullptr; }
  static bool hasDecodeBuffer() { return Log::orbDecodeBuffer != nullptr; }

  // As if the library had just been loaded.
  static void reset() {
    log().release();
    log().~Log();
    new (&log()) Log;
    LogTag::set("");
    Log::orb_alog_fn = nullptr;
    Log::orbGetPersistSetting = nullptr;
    Log::orbDecodeBuffer = nullptr;
    if (Log::_libalog_handle != nullptr) dlclose(Log::_libalog_handle);
    Log::_libalog_handle = nullptr;
    signal(SIGUSR1, SIG_DFL);
  }
};

// A record of this text, as a writer queues it.
inline void queueRecord(RecordDump& dump, const std::string& message) {
  LogRecord record;
  record.stamp(3);
  dump.queueRecord(record, message);
}

constexpr char kLoggingProperty[] = "persist.vendor.data.orb.logging";

// Each test begins and ends with a new log and a silent platform.
class LogFixture : public testing::Test {
 protected:
  LogFixture() { startOver(); }
  ~LogFixture() override { startOver(); }

  Log& log = LogTestPeer::log();

 private:
  static void startOver() {
    LogTestPeer::reset();
    recording::clear();
    recording::clearProperties();
    recording::setDiagListening(false);
    recording::setDiagAllocFails(false);
  }
};

// The text of a packet's body.
inline std::string packetText(const recording::Packet& packet) {
  const std::string text(packet.bytes.begin() + 4, packet.bytes.end());
  return text.substr(0, text.find('\0'));
}

inline bool endsWith(const std::string& text, const std::string& tail) {
  return text.size() >= tail.size() &&
         text.compare(text.size() - tail.size(), tail.size(), tail) == 0;
}
