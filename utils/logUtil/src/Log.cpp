// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
//
// The lines of Log that the library writes. Set-up and end are in LogSetup.cpp, the hook library in
// LogHook.cpp, what only others call in LogForOthers.cpp.
#include "Log.h"

#include "DiagCmdProcessor.h"
#include "LogTag.h"

namespace {

constexpr char kVersion[] = "ORB-20250524-d9c57ad5";

// Log points: line numbers that log consumers rely on.
constexpr int kDumpCompletedLine = 142;
constexpr int kPrintVersionLine = 155;

// This thread holds the log's mutex. In this file alone: a thread's variable with a name that
// others may have is reached through symbols that the application's could take the place of.
thread_local bool writing = false;

}  // namespace

Log::Writer::Writer(Mutex& mutex) : mMutex(mutex) {
  mutex.lock();
  writing = true;
}

Log::Writer::~Writer() {
  writing = false;
  mMutex.unlock();
}

bool Log::Writer::isHere() { return writing; }

void Log::addLogRecord(int level, const char* tag, const char* file, const char* function, int line,
                       const char* format, ...) {
  const ErrnoKeeper keeper;
  va_list args;
  va_start(args, format);
  const LogLine text(tag, file, function, line, format, args);
  va_end(args);
  writeRecord(level, text);
}

void Log::addLogRecord(int level, const LogHead& head, const char* format, ...) {
  const ErrnoKeeper keeper;
  va_list args;
  va_start(args, format);
  const LogLine text(head, format, args);
  va_end(args);
  writeRecord(level, text);
}

void Log::writeRecord(int level, const LogLine& line) {
  const char* const platformTag = LogTag::get();
  if (home.isForked()) {
    __android_log_print(level, platformTag, "%s", line.text());
    return;
  }
  const bool deferred = deferredLogging.load();
  const bool sends = !deferred && DiagCmdProcessor::isListening();
  if (!deferred && !sends && !encrypts.load() && orb_alog_fn.load() == nullptr) {
    // Nobody wants the record, so there is nothing that the line has to stay in step with.
    __android_log_print(level, platformTag, "%s", line.text());
    recordDump.requestDumpWhenFull();
    return;
  }
  const Writer writer(mutex);
  const AlogFunction alog = orb_alog_fn.load();
  if (alog != nullptr) {
    alog(level, platformTag, "%s", line.text());
  } else {
    __android_log_print(level, platformTag, "%s", line.text());
  }
  recordDump.requestDumpWhenFull();
  const bool encrypted = encryptedLog.isEnabled();
  if (!encrypted && !deferred && !sends) return;

  RecordStamp record;
  record.stamp(level);
  if (encrypted || sends) {
    char entry[LogLine::kBufferSize];
    const size_t size = record.formatEntry(line.view(), entry);
    if (encrypted) encryptedLog.encryptLogMsg({entry, size});
    if (sends && size > 0) DiagCmdProcessor::sendPacket({entry, size});
  }
  if (deferred) recordDump.queueRecord(record, line.view());
}

void Log::printToAdb(int level, const char* tag, const char* file, const char* function, int line,
                     const char* format, ...) {
  const ErrnoKeeper keeper;
  va_list args;
  va_start(args, format);
  const LogLine text(tag, file, function, line, format, args);
  va_end(args);
  __android_log_print(level, LogTag::get(), "%s", text.text());
  if (home.isForked()) return;
  recordDump.requestDumpWhenFull();
  RecordStamp record;
  record.stamp(level);
  recordDump.queueRecord(record, text.view());
}

void Log::printVersion() {
  addLogRecord(ANDROID_LOG_INFO, "ORB", kLogSource, "printVersion", kPrintVersionLine, "version %s",
               kVersion);
}

void Log::addDumpRequest(DumpRequestType type) {
  if (!home.isForked()) recordDump.addDumpRequest(type);  // a forked child has no dumper
}

void Log::noteDumpCompleted(const char* request, int milliseconds) {
  getInstance()->addLogRecord(ANDROID_LOG_DEBUG, "ORB", kLogSource, "dumper", kDumpCompletedLine,
                              "Dump completed, request type: %s, elapsed time = %d ms", request,
                              milliseconds);
}
