// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
//
// The one Log object, its set-up and its end.
#include <android/log.h>
#include <cutils/properties.h>
#include <dlfcn.h>
#include <signal.h>

#include <cinttypes>
#include <climits>
#include <cstdio>
#include <new>
#include <set>

#include "DiagCmdProcessor.h"
#include "HardStop.h"
#include "Log.h"
#include "Thread.h"

namespace {

constexpr char kLoggingProperty[] = "persist.vendor.data.orb.logging";
constexpr char kLogPermsProperty[] = "persist.vendor.data.orb.log_perms";
constexpr char kHookLibrary[] = "liborbalog.so";

// Bits of the logging property.
constexpr int kDeferredBit = 1;
constexpr int kDmapDebugOffBit = 2;
constexpr int kDmapOffBit = 4;

constexpr std::chrono::milliseconds kExitPatience(200);

// Log point: a line number that log consumers rely on.
constexpr int kCannotOpenHookLine = 225;

// Logging never fails its caller: a step for which there is no memory is done without.
template <class Step>
void ifMemoryAllows(const Step& step) {
  try {
    step();
  } catch (const std::bad_alloc&) {
  }
}

}  // namespace

std::atomic<Log::AlogFunction> Log::orb_alog_fn{nullptr};
std::atomic<Log::GetPersistSettingFunction> Log::orbGetPersistSetting{nullptr};
std::atomic<Log::DecodeBufferFunction> Log::orbDecodeBuffer{nullptr};
void* Log::_libalog_handle = nullptr;

Log* Log::getInstance() {
  alignas(Log) static unsigned char storage[sizeof(Log)];
  static Log* const instance = new (storage) Log;
  return instance;
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
  ifMemoryAllows([&] { setTag(tag); });
  {
    LockGuard lock(lifecycleMutex);
    if (initialised || changing) return;
    changing = true;
  }
  setUp(tag);
  {
    LockGuard lock(lifecycleMutex);
    initialised = true;
    changing = false;
  }
  printVersion();
}

void Log::setUp(const char* tag) {
  followTimeZone();  // the first time here, where the application has called
  readProperties();
  ifMemoryAllows([&] { registerDiagCommand(); });
  ifMemoryAllows([&] { loadHook(); });
  ifMemoryAllows([&] { setTag(tag); });
  ifMemoryAllows([&] { initLogEncryption(); });
  ifMemoryAllows([&] { startThreads(); });
}

void Log::releaseAtExit() {
  exiting = true;
  release();
}

void Log::release() {
  if (home.isElsewhere()) return;
  {
    LockGuard lock(lifecycleMutex);
    if (!initialised || changing) return;
    changing = true;
  }
  if (dumperThread != nullptr) addDumpRequest(SHUTDOWN);
  if (timerThread != nullptr) requestTimerStop();
  stop(timerThread, false);
  // The dumper logs, so it may be waiting for the very call that the caller is in; and the end of
  // the process does not wait for one that is stuck.
  const bool stuck = exiting && dumperThread != nullptr && !dumperEnded->decreaseFor(kExitPatience);
  stop(dumperThread, Writer::isHere() || stuck);
  LockGuard lock(lifecycleMutex);
  initialised = false;
  changing = false;
}

void Log::stop(std::unique_ptr<Thread>& thread, bool waitsForCaller) {
  if (thread == nullptr) return;
  if (waitsForCaller || thread->isHere()) {
    thread->detach();
  } else {
    thread->join();
  }
  thread.reset();
}

// Lines read the tag without a lock, so no text that was ever a tag goes away. They are few.
void Log::setTag(const char* tag) {
  static std::set<std::string>* const tags = new std::set<std::string>;
  LockGuard lock(lifecycleMutex);
  logTag = tags->insert(tag != nullptr ? tag : "").first->c_str();
}

void Log::readProperties() {
  const int bits = property_get_int32(kLoggingProperty, 0);
  deferredLogging = (bits & kDeferredBit) != 0;
  dmapDebugSuppressed = (bits & (kDmapDebugOffBit | kDmapOffBit)) != 0;
  dmapSuppressed = (bits & kDmapOffBit) != 0;
  logPermsEnabled = property_get_bool(kLogPermsProperty, 0) != 0;
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

void Log::loadHook() {
  void* const library = dlopen(kHookLibrary, RTLD_NOW);
  if (library == nullptr) {
    dlerror();  // the thread is the application's, and so is what it asks next
    addLogRecord(ANDROID_LOG_ERROR, "ORB", kSource, "init", kCannotOpenHookLine,
                 "cannot open liborbalog.so");
    return;
  }
  if (!resolve(library, "alog", orb_alog_fn)) {
    addLogRecord(ANDROID_LOG_ERROR, "ORB", kSource, "init", __LINE__, "cannot find main function");
    dlclose(library);
    return;
  }
  _libalog_handle = library;
  if (!resolve(library, "getPersistSetting", orbGetPersistSetting) ||
      !resolve(library, "decodeBuffer", orbDecodeBuffer)) {
    addLogRecord(ANDROID_LOG_ERROR, "ORB", kSource, "init", __LINE__,
                 "cannot find debug cmd function");
    return;
  }
  struct sigaction action = {};
  action.sa_handler = eintrTestHandler;  // without SA_RESTART: interrupting calls is what it is for
  sigemptyset(&action.sa_mask);
  sigaction(SIGUSR1, &action, nullptr);
  letThreadsTakeUserSignal();
}

template <typename Function>
bool Log::resolve(void* library, const char* symbol, std::atomic<Function>& pointer) {
  dlerror();
  void* const address = dlsym(library, symbol);
  const bool found = dlerror() == nullptr;
  pointer = found ? reinterpret_cast<Function>(address) : nullptr;
  return found;
}

// May interrupt a thread anywhere, in a log call too: nothing here takes the log's mutex.
void Log::eintrTestHandler(int signalNumber) {
  const ErrnoKeeper keeper;
  char text[32];
  std::snprintf(text, sizeof text, "Received signal %d", signalNumber);
  const LogLine line("ORB", kSource, "eintrTestHandler", __LINE__, text);
  __android_log_print(ANDROID_LOG_DEBUG, getInstance()->logTag.load(), "%s", line.text());
}

// A thread that cannot be had is done without: logging goes on, records may have to wait.
void Log::startThreads() {
  dumpRequests.begin();
  const auto ended = std::make_shared<Semaphore>();
  dumperEnded = ended;
  auto dumperHandle = std::make_unique<Thread>();
  auto timerHandle = std::make_unique<Thread>();
  if (startThread(*dumperHandle, "orb-log-dump", ThreadWork::Library, [this, ended] {
        dumper();
        ended->increase();
      }))
    dumperThread = std::move(dumperHandle);
  if (startThread(*timerHandle, "orb-log-timer", ThreadWork::Library, [this] { timerLoop(); }))
    timerThread = std::move(timerHandle);
}

int property_get_int32(const char* key, int defaultValue) {
  if (key == nullptr) return defaultValue;
  char text[PROPERTY_VALUE_MAX] = "";
  if (property_get(key, text, "") <= 0) return defaultValue;
  char* end = nullptr;
  errno = 0;
  const intmax_t value = strtoimax(text, &end, 0);
  if (errno == ERANGE || end == text || value > INT_MAX) return defaultValue;
  return static_cast<int>(value);
}
