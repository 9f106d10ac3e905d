// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

#include <chrono>
#include <map>
#include <memory>
#include <mutex>
#include <new>
#include <string>
#include <utility>

#include "Log.h"
#include "RecordingPlatform.h"

// What tests may see and set inside the log of the process.
struct LogTestPeer {
  static Log& log() { return *Log::getInstance(); }

  static size_t queuedRecords() { return log().records.size(); }
  static size_t queuedRequests() { return log().dumpRequests.size(); }
  static void queueRecord(const std::string& message) {
    Log::LogRecord record;
    record.stamp(3);
    log().queueRecord(record, message);
  }
  static void queueRecord(std::shared_ptr<Log::LogRecord> record) {
    log().records.push(std::move(record));
  }
  static void setTimerInterval(std::chrono::milliseconds interval) {
    log().timerInterval = interval;
  }
  static void setStopLatched(bool latched) {
    LockGuard lock(log().timerMutex);
    log().stopLatched = latched;
  }
  static unsigned stopRequests() {
    LockGuard lock(log().timerMutex);
    return log().stopRequests;
  }
  static void requestTimerStop() { log().requestTimerStop(); }
  // As the dumper does, on the calling thread.
  static void dump(Log::DumpRequestType type) { log().dump(type); }
  static bool initialised() {
    LockGuard lock(log().lifecycleMutex);
    return log().initialised;
  }
  static bool hasDumper() { return log().dumperThread != nullptr; }
  static bool hasTimer() { return log().timerThread != nullptr; }
  static bool logPermsEnabled() { return log().logPermsEnabled; }
  static void setDeferred(bool deferred) { log().deferredLogging = deferred; }
  static void* hookLibrary() { return Log::_libalog_handle; }
  static bool hasGetPersistSetting() { return Log::orbGetPersistSetting != nullptr; }
  static bool hasDecodeBuffer() { return Log::orbDecodeBuffer != nullptr; }
  static bool encryptionEnabled() {
    LockGuard lock(log().mutex);
    return log().encryptionEnabled;
  }
  static uint64_t recordsPerFile() { return log().recordsPerFile; }
  static int maxFiles() { return log().maxFiles; }
  static int fileIndex() { return log().fileIndex; }
  // Where to go on after files of these ages in seconds, with so many files kept.
  static int reviewExistingFiles(uint8_t maxFiles, const std::map<int64_t, std::string>& files) {
    LockGuard lock(log().mutex);
    log().maxFiles = maxFiles;
    log().reviewExistingFiles(files, time(nullptr));
    return log().fileIndex;
  }
  // The mutex that every record takes, for a thread that is to be inside a log call for long.
  static Mutex& mutex() { return log().mutex; }
  // Whether the calling thread is inside the log.
  static bool isWriting() { return Log::Writer::isHere(); }
  // The next record finds the present file full. For a thread that is inside the log.
  static void fillFile() { log().recordsInFile = static_cast<int>(log().recordsPerFile) + 1; }
  static std::chrono::milliseconds timerInterval() { return log().timerInterval; }
  static void wakeTimer() { log().timerWake.notify_all(); }
  static Log::DumpRequestType takeRequest() {
    Log::DumpRequestType request = Log::SHUTDOWN;
    EXPECT_TRUE(log().dumpRequests.tryPop(request));
    return request;
  }

  // As if the library had just been loaded.
  static void reset() {
    log().release();
    new (&log().home) ProcessMark;
    resetEncryption();
    std::shared_ptr<Log::LogRecord> record;
    while (log().records.tryPop(record)) {
    }
    Log::DumpRequestType request;
    while (log().dumpRequests.tryPop(request)) {
    }
    log().deferredLogging = log().dmapDebugSuppressed = log().dmapSuppressed = false;
    log().logPermsEnabled = false;
    log().logTag = "";
    log().stopRequests = 0;
    log().stopLatched = false;
    setTimerInterval(std::chrono::seconds(30));
    Log::orb_alog_fn = nullptr;
    Log::orbGetPersistSetting = nullptr;
    Log::orbDecodeBuffer = nullptr;
    if (Log::_libalog_handle != nullptr) dlclose(Log::_libalog_handle);
    Log::_libalog_handle = nullptr;
    signal(SIGUSR1, SIG_DFL);
  }

 private:
  static void resetEncryption() {
    log().stopEncryption();
    LockGuard lock(log().mutex);
    log().wrappedKey.clear();
    log().recordsPerFile = 0;
    log().maxFiles = 0;
    log().recordsInFile = log().fileIndex = 0;
    log().fileTag.clear();
    log().logFile = LogFile();
  }
};

constexpr char kLoggingProperty[] = "persist.vendor.data.orb.logging";

// Each test begins and ends with a fresh log and a silent platform.
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
