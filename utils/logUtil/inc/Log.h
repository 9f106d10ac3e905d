// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <android/log.h>
#include <sys/time.h>
#include <sys/types.h>

#include <atomic>
#include <chrono>
#include <cstdarg>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "GcmCipher.h"
#include "LogFile.h"
#include "LogLine.h"
#include "Mutex.h"
#include "Process.h"
#include "Semaphore.h"
#include "Thread.h"
#include "ThreadSafeQueue.h"

// The log of the process, front end of the IPC and process layers: every line goes to the platform
// log (or to the hook library's log function), and a record of it to the diagnostic channel, at
// once or, in deferred mode, in batches written by the dumper thread. When a configuration file
// gives a public key, every record is also written, encrypted, to files that only the holder of the
// private key can read.
//
// There is one object, built when the library is loaded and never destroyed: threads that still run
// while the process exits may log, only its own two threads are stopped then. Any thread may log at
// any time, before init() and after release() too; errno is left as it was.
//
// In a child forked from the process that called init(), lines go to the platform log and nowhere
// else: the locks may have been taken by threads that are not there, files, keys and the diagnostic
// channel are the parent's. `home` tells; it is looked at before any lock is taken.
//
// `mutex` makes addLogRecord, printVersion and dMapLog one at a time and guards the state of
// encrypted logging. It is held over the hook call, the encryption and the diagnostic write, so
// that lines and records come out in the same order; the hook must not log through this class.
// printToAdb, logModuleDebug and the signal handler take no lock; the queues have their own.
// `timerMutex` guards the stop requests of the timer thread, `lifecycleMutex` the two flags that
// decide which of several init() and release() calls does the work; neither is held while waiting
// for a thread.
class Log {
 public:
  // What a line leaves behind until it is written out.
  struct LogRecord {
    std::string message;
    long tid = 0;
    int pid = 0;
    timeval time{};
    int level = 0;
    bool dmap = false;

    void init(int recordLevel, const std::string& text);
    // The record as one line of at most 511 characters; empty when its time has no calendar form.
    std::string getDiagEntry() const;

    // The parts of the two above: all but the message, and the line of a message kept elsewhere.
    void stamp(int recordLevel, bool isDmap = false);
    size_t formatEntry(std::string_view text, char (&entry)[LogLine::kBufferSize]) const;
  };

  enum DumpRequestType : int {
    BUFFER_IS_FULL = 0,
    USER_COMMAND = 1,
    LOGGING_TIMER_EXPIRED = 2,
    CRASH_DETECTED = 3,
    SHUTDOWN = 4,
  };

  static Log* getInstance();

  Log(const Log&) = delete;
  Log& operator=(const Log&) = delete;

  // Takes the tag for the platform log, on every call. The first call also reads the properties,
  // registers the diagnostic command, loads the hook library and starts the threads; what fails is
  // done without.
  void init(const char* tag);
  // Stops the threads; init() may follow. It does not wait for a thread that cannot end before it
  // returns: the calling one, and the dumper when the caller is inside a log call.
  void release();

  void addLogRecord(int level, const char* tag, const char* file, const char* function, int line,
                    const char* format, ...) __attribute__((format(printf, 7, 8)));
  // To the platform log, never to the hook; the record is queued whatever the properties say.
  void printToAdb(int level, const char* tag, const char* file, const char* function, int line,
                  const char* format, ...) __attribute__((format(printf, 7, 8)));
  // To the platform log only, at level debug.
  void logModuleDebug(const char* format, ...) __attribute__((format(printf, 2, 3)));
  void printVersion();
  // A line of the data path: to the hook (and not to the platform log without it) and to the
  // diagnostic channel, deferred mode or not.
  void dMapLog(int level, const std::string& message);

  void addDumpRequest(DumpRequestType type);
  void writeToDiag(const std::string& entry);

  // Decodes the payload of a diagnostic command with the hook library; false without it.
  bool decodeBuff(unsigned char* request, unsigned short length, std::vector<unsigned char>& out);
  // Asks the hook library for a setting; false without it.
  bool getPersistSetting(unsigned char& setting, std::vector<unsigned char>& out);

 private:
  // Holds the log for one record and marks the thread as being inside it.
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
  friend struct LogTestPeer;  // tests look inside and start over; nothing of it is in the library

  // The source all lines of this class are shown under, whichever file they come from.
  static constexpr const char* kSource = "utils/logUtil/src/Log.cpp";
  static constexpr size_t kFullQueue = 3000;

  Log() = default;

  friend struct LoadedLog;
  void releaseAtExit();
  void setUp(const char* tag);
  void setTag(const char* tag);
  void readProperties();
  void registerDiagCommand();
  void loadHook();
  template <typename Function>
  static bool resolve(void* library, const char* symbol, std::atomic<Function>& pointer);
  static void eintrTestHandler(int signalNumber);
  void startThreads();
  static void stop(std::unique_ptr<Thread>& thread, bool waitsForCaller);

  void writeRecord(int level, const LogLine& line);
  // One request that waits is enough: the dump that it leads to takes whatever is queued by then.
  void requestDumpWhenFull();
  void queueRecord(const LogRecord& stamped, std::string_view message);

  void initLogEncryption();
  bool configureEncryption(int fd);
  bool startEncryption(const std::vector<uint8_t>& aesKey, std::vector<uint8_t> wrapped,
                       uint64_t recordLimit, uint8_t fileLimit);
  void stopEncryption();
  void stopBeforeExit();
  void endEncryption() ORB_REQUIRES(mutex);
  void encryptRecord(std::string_view entry) ORB_REQUIRES(mutex);
  void encryptLogMsg(std::string_view entry) ORB_REQUIRES(mutex);
  void nextLogFile() ORB_REQUIRES(mutex);
  std::string logFileName(int index) const ORB_REQUIRES(mutex);
  bool createNewlogFileName() ORB_REQUIRES(mutex);
  void beginWith(LogFile next) ORB_REQUIRES(mutex);
  void writeToFile(const uint8_t* bytes, size_t size, LogFile& file) const ORB_REQUIRES(mutex);
  void applyLogPerms() const;
  std::string getLogFilePath() const;
  std::string getFileTag() const;
  void checkExistingFiles() ORB_REQUIRES(mutex);
  // By age in seconds, youngest first.
  void reviewExistingFiles(std::map<int64_t, std::string> files, time_t now) ORB_REQUIRES(mutex);
  void removeOldFiles(std::map<int64_t, std::string> files, time_t now) const;

  void dumper();
  void timerLoop();
  void dump(DumpRequestType type);
  void requestTimerStop();

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
  std::atomic<const char*> logTag{""};  // points into a table that only grows
  std::atomic<bool> deferredLogging{false};
  std::atomic<bool> dmapDebugSuppressed{false};
  std::atomic<bool> dmapSuppressed{false};
  std::atomic<bool> logPermsEnabled{false};

  ProcessMark home;  // the process that called init() first
  Mutex mutex;

  // Encrypted logging.
  std::atomic<bool> cryptoGone{false};  // the process ends
  bool encryptionEnabled ORB_GUARDED_BY(mutex) = false;
  GcmCipher recordCipher ORB_GUARDED_BY(mutex);  // holds the session key
  std::vector<uint8_t> wrappedKey
      ORB_GUARDED_BY(mutex);  // the same for whoever has the private key; begins every file
  uint64_t recordsPerFile ORB_GUARDED_BY(mutex) = 0;
  uint8_t maxFiles ORB_GUARDED_BY(mutex) = 0;
  int recordsInFile ORB_GUARDED_BY(mutex) = 0;
  int fileIndex ORB_GUARDED_BY(mutex) = 0;
  std::string fileTag ORB_GUARDED_BY(mutex);
  LogFile logFile ORB_GUARDED_BY(mutex);   // the present one
  LogFile fullFile ORB_GUARDED_BY(mutex);  // the one before, for the record that found it full

  ThreadSafeQueue<std::shared_ptr<LogRecord>> records;
  ThreadSafeQueue<DumpRequestType> dumpRequests;

  Mutex lifecycleMutex;
  bool initialised ORB_GUARDED_BY(lifecycleMutex) = false;
  bool changing ORB_GUARDED_BY(lifecycleMutex) =
      false;  // an init() or release() is under way and owns the thread members
  std::unique_ptr<Thread> dumperThread;
  std::unique_ptr<Thread> timerThread;
  std::shared_ptr<Semaphore> dumperEnded;  // of the present dumper
  std::atomic<bool> exiting{false};

  Mutex timerMutex;
  Condition timerWake;
  unsigned stopRequests ORB_GUARDED_BY(timerMutex) = 0;
  bool stopLatched ORB_GUARDED_BY(timerMutex) = false;
  std::atomic<std::chrono::milliseconds> timerInterval{std::chrono::seconds(30)};
};

// Has localtime_r() know the present time zone. It may miss that the system's file was replaced, so
// tzset() is called then, and only then: it reads the environment, which the application may be
// changing on another thread. After a change of TZ it is for the application to call it.
void followTimeZone();

// The text of a property as an integer in decimal, "0x" hexadecimal or leading-zero octal; the
// default when it is missing, no number, or above the range of int.
int property_get_int32(const char* key, int defaultValue);

// The usual calls: own tag, position of the caller. ORB_LOG_AT is for lines whose number log
// consumers rely on; it takes the number instead of __LINE__.
#define ORB_LOG_AT(level, line, ...) \
  Log::getInstance()->addLogRecord(level, "ORB", __FILE__, __func__, line, __VA_ARGS__)
// For lines of a unit that is spread over files or helper functions: shown under the unit's own
// names.
#define ORB_LOG_AS(level, file, function, ...) \
  Log::getInstance()->addLogRecord(level, "ORB", file, function, __LINE__, __VA_ARGS__)
#define ORB_LOGV(...) ORB_LOG_AT(2, __LINE__, __VA_ARGS__)
#define ORB_LOGD(...) ORB_LOG_AT(3, __LINE__, __VA_ARGS__)
#define ORB_LOGI(...) ORB_LOG_AT(4, __LINE__, __VA_ARGS__)
#define ORB_LOGE(...) ORB_LOG_AT(6, __LINE__, __VA_ARGS__)
