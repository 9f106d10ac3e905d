// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
//
// The one Log object, its set-up and its end.
#include <android/log.h>
#include <openssl/crypto.h>

#include <chrono>
#include <new>
#include <thread>

#include "DiagCmdProcessor.h"
#include "EncryptedLogSetup.h"
#include "HardStop.h"
#include "Log.h"
#include "LogProperties.h"
#include "LogTag.h"

namespace {

// Log point: a line number that log consumers rely on.
constexpr int kInitFailedLine = 645;

// How long the end of the process waits for a record that another thread is writing.
constexpr int kExitTries = 100;
constexpr std::chrono::milliseconds kExitPause(1);

// A step for which there is no memory is left out: logging never fails its caller.
template <class Step>
void ifMemoryAllows(const Step& step) {
  try {
    step();
  } catch (const std::bad_alloc&) {
  }
}

}  // namespace

Log* Log::getInstance() {
  static NeverDestroyed<Log> instance;
  return &instance.get();
}

// Builds the log when the library is loaded and stops its threads when the process exits: after
// that, what they use in other libraries is no longer there.
struct LoadedLog {
  LoadedLog() { Log::getInstance(); }
  ~LoadedLog() {
    noteProcessExit();
    Log::getInstance()->releaseAtExit();
  }
};

namespace {

const LoadedLog loadedLog;

}  // namespace

void Log::init(const char* tag) {
  home.setOnce();
  if (home.isElsewhere()) return;
  ifMemoryAllows([&] { LogTag::set(tag); });
  {
    const LockGuard lock(lifecycleMutex);
    if (initialised || changing) return;
    changing = true;
  }
  setUp(tag);
  {
    const LockGuard lock(lifecycleMutex);
    initialised = true;
    changing = false;
  }
  printVersion();
}

void Log::setUp(const char* tag) {
  followTimeZone();  // reads the environment: the first time on the application's thread
  readProperties();
  ifMemoryAllows([&] { registerDiagCommand(); });
  ifMemoryAllows([&] { loadHook(); });
  ifMemoryAllows([&] { LogTag::set(tag); });
  ifMemoryAllows([&] { initLogEncryption(); });
  ifMemoryAllows([&] { recordDump.start(); });
}

void Log::releaseAtExit() {
  exiting = true;
  release();
}

void Log::release() {
  if (home.isElsewhere()) return;
  {
    const LockGuard lock(lifecycleMutex);
    if (!initialised || changing) return;
    changing = true;
  }
  // The dumper logs, so it may wait for the log call that the caller is in.
  recordDump.stop(Writer::isHere(), exiting);
  const LockGuard lock(lifecycleMutex);
  initialised = false;
  changing = false;
}

void Log::readProperties() {
  const LogProperties properties = LogProperties::read();
  deferredLogging = properties.deferredLogging;
  dmapDebugSuppressed = properties.dmapDebugSuppressed;
  dmapSuppressed = properties.dmapSuppressed;
  logPermsEnabled = properties.logPermsEnabled;
}

void Log::registerDiagCommand() {
  DiagCmdProcessor::getInstance()->initialize(
      [](unsigned char* request, unsigned short length, std::vector<unsigned char>& response) {
        Log* const log = Log::getInstance();
        bool ok = false;
        ifMemoryAllows([&] { ok = log->decodeBuff(request, length, response); });
        log->addDumpRequest(USER_COMMAND);
        return ok;
      });
}

void Log::initLogEncryption() {
  stopEncryption();
  const UniqueFd config = openLogConfig();
  if (config.get() < 0) return;
  bool done = false;
  ifMemoryAllows([&] { done = startEncryption(config.get()); });
  if (done) return;
  stopEncryption();
  printToAdb(ANDROID_LOG_ERROR, "ORB", kLogSource, "initLogEncryption", kInitFailedLine,
             "C-Logging Init failed");
}

bool Log::startEncryption(int config) {
  EncryptedLog::Settings settings;
  settings.logPermsEnabled = logPermsEnabled;
  if (!readLogConfig(config, settings)) return false;
  // libcrypto cleans itself up while the process exits. Threads that still log must not use it
  // then.
  static const bool stopsInTime = OPENSSL_atexit([] { getInstance()->stopBeforeExit(); }) == 1;
  const Writer writer(mutex);
  encrypts = stopsInTime && encryptedLog.start(settings);
  return encrypts;
}

void Log::stopEncryption() {
  const Writer writer(mutex);
  encrypts = false;
  encryptedLog.stop();
}

// libcrypto is about to clean itself up. This waits for a record that is being sealed, but not for
// a log call that does not end: that one finds the flag before it seals. A forked child has nothing
// to stop. A thread that is inside a log call holds the mutex itself.
void Log::stopBeforeExit() {
  EncryptedLog::noteCryptoGone();
  if (home.isElsewhere() || Writer::isHere()) return;
  for (int left = kExitTries; left > 0; --left) {
    if (mutex.try_lock()) {
      encrypts = false;
      encryptedLog.stop();
      mutex.unlock();
      return;
    }
    std::this_thread::sleep_for(kExitPause);
  }
}
