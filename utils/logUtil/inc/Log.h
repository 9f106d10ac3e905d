// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <android/log.h>

#include <atomic>
#include <cstdarg>
#include <string>
#include <vector>

#include "DumpRequest.h"
#include "EncryptedLog.h"
#include "LogLine.h"
#include "LogRecord.h"
#include "Mutex.h"
#include "NeverDestroyed.h"
#include "Process.h"
#include "RecordDump.h"

// The log of the process, front end of the IPC and process layers: every line goes to the platform
// log (or to the hook library's log function), and a record of it to the diagnostic channel, at
// once or, in deferred mode, through its RecordDump. If a configuration file gives a public key,
// every record also goes to its EncryptedLog.
//
// There is one object. It is built when the library is loaded and never destroyed: threads that
// still run while the process exits may log; only its own two threads are stopped then. Any thread
// may log at any time, also before init() and after release(). errno stays as it was.
//
// In a child forked from the process that called init(), lines go to the platform log and nowhere
// else: threads that the child does not have may hold the locks, and files, keys and the diagnostic
// channel belong to the parent. `home` tells the two apart; it is read before any lock is taken.
//
// `mutex` lets one addLogRecord, printVersion or dMapLog run at a time and guards the encrypted
// log. It is held over the hook call, the encryption and the diagnostic write, so that lines and
// records come out in the same order; the hook must not log through this class. A line that has
// neither a hook nor a record takes no lock, nor do printToAdb, logModuleDebug and the signal
// handler. `lifecycleMutex` guards the two flags that decide which of several init() and release()
// calls does the work; it is not held during a wait for a thread.
class Log : public DumpRequest {
 public:
  using LogRecord = ::LogRecord;

  static Log* getInstance();

  Log(const Log&) = delete;
  Log& operator=(const Log&) = delete;

  // Sets the tag for the platform log, on every call. The first call also reads the properties,
  // registers the diagnostic command, loads the hook library and starts the threads. A step that
  // fails is left out.
  void init(const char* tag);
  // Stops the threads; init() may follow. It waits for them, except for the calling thread, and for
  // the dumper if the caller is inside a log call.
  void release();

  void addLogRecord(int level, const char* tag, const char* file, const char* function, int line,
                    const char* format, ...) __attribute__((format(printf, 7, 8)));
  // The same with a head that is ready; what the macros call.
  void addLogRecord(int level, const LogHead& head, const char* format, ...)
      __attribute__((format(printf, 4, 5)));
  // To the platform log, never to the hook; the record is queued whatever the properties say.
  void printToAdb(int level, const char* tag, const char* file, const char* function, int line,
                  const char* format, ...) __attribute__((format(printf, 7, 8)));
  void printVersion();
  void addDumpRequest(DumpRequestType type);
  // Decodes the payload of a diagnostic command with the hook library; false without it.
  bool decodeBuff(unsigned char* request, unsigned short length, std::vector<unsigned char>& out);

  // What the library itself never calls (LogForOthers.cpp).
  // To the platform log only, at level debug.
  void logModuleDebug(const char* format, ...) __attribute__((format(printf, 2, 3)));
  // A line of the data path: to the hook (and not to the platform log without it) and to the
  // diagnostic channel, deferred mode or not.
  void dMapLog(int level, const std::string& message);
  void writeToDiag(const std::string& entry);
  // Asks the hook library for a setting; false without it.
  bool getPersistSetting(unsigned char& setting, std::vector<unsigned char>& out);

 private:
  // Holds the log's mutex for one record, and notes that the thread is inside the log.
  class ORB_SCOPED_CAPABILITY Writer {
   public:
    explicit Writer(Mutex& mutex) ORB_ACQUIRE(mutex);
    Writer(const Writer&) = delete;
    Writer& operator=(const Writer&) = delete;
    ~Writer() ORB_RELEASE();
    // Whether the calling thread is inside the log.
    static bool isHere();

   private:
    Mutex& mMutex;
  };
  friend class NeverDestroyed<Log>;
  friend struct LoadedLog;    // builds it and stops its threads
  friend struct LogTestPeer;  // tests start over with it; nothing of it is in the library

  Log() : recordDump(noteDumpCompleted) {}

  void releaseAtExit();
  void setUp(const char* tag);
  void readProperties();
  void registerDiagCommand();
  void loadHook();
  template <class Function>
  static bool resolve(void* library, const char* symbol, std::atomic<Function>& pointer);
  static void eintrTestHandler(int signalNumber);

  void writeRecord(int level, const LogLine& line);
  static void noteDumpCompleted(const char* request, int milliseconds);

  void initLogEncryption();
  bool startEncryption(int config);
  void stopEncryption();
  void stopBeforeExit();

  // The hook library's functions, null until init() has found them; read without a lock.
  using AlogFunction = int (*)(int level, const char* tag, const char* format, ...);
  using GetPersistSettingFunction = int (*)(unsigned char* setting, unsigned char* out);
  using DecodeBufferFunction = bool (*)(unsigned char* in, unsigned short inLength,
                                        unsigned char* out, unsigned short* outLength);
  static std::atomic<AlogFunction> orb_alog_fn;
  static std::atomic<GetPersistSettingFunction> orbGetPersistSetting;
  static std::atomic<DecodeBufferFunction> orbDecodeBuffer;
  static void* _libalog_handle;

  // Read without a lock by every line; init() stores them.
  std::atomic<bool> deferredLogging{false};
  std::atomic<bool> dmapDebugSuppressed{false};
  std::atomic<bool> dmapSuppressed{false};
  std::atomic<bool> logPermsEnabled{false};
  // The encrypted log is enabled. Written under mutex, read without: who reads true looks again.
  std::atomic<bool> encrypts{false};

  ProcessMark home;  // the process that called init() first
  Mutex mutex;
  EncryptedLog encryptedLog ORB_GUARDED_BY(mutex);
  RecordDump recordDump;

  Mutex lifecycleMutex;
  bool initialised ORB_GUARDED_BY(lifecycleMutex) = false;
  // An init() or release() is under way and starts or stops the threads.
  bool changing ORB_GUARDED_BY(lifecycleMutex) = false;
  std::atomic<bool> exiting{false};
};

// The usual calls: own tag, position of the caller. ORB_LOG_AT is for lines whose number log
// consumers rely on; it takes the number instead of __LINE__. All but the text's values is
// constant.
#define ORB_LOG_AT(level, line, ...) ORB_LOG_HEAD(level, __FILE__, __func__, line, __VA_ARGS__)
// For lines of a unit that is spread over files or helper functions: shown under the unit's own
// names.
#define ORB_LOG_AS(level, file, function, ...) \
  ORB_LOG_HEAD(level, file, function, __LINE__, __VA_ARGS__)
#define ORB_LOG_HEAD(level, file, function, line, ...)             \
  do {                                                             \
    static constexpr LogHead logHead("ORB", file, function, line); \
    Log::getInstance()->addLogRecord(level, logHead, __VA_ARGS__); \
  } while (0)
#define ORB_LOGV(...) ORB_LOG_AT(ANDROID_LOG_VERBOSE, __LINE__, __VA_ARGS__)
#define ORB_LOGD(...) ORB_LOG_AT(ANDROID_LOG_DEBUG, __LINE__, __VA_ARGS__)
#define ORB_LOGI(...) ORB_LOG_AT(ANDROID_LOG_INFO, __LINE__, __VA_ARGS__)
#define ORB_LOGE(...) ORB_LOG_AT(ANDROID_LOG_ERROR, __LINE__, __VA_ARGS__)
