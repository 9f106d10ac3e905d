// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
//
// The writers of Log. Set-up and end are in LogSetup.cpp, the threads in LogDumper.cpp.
#include "Log.h"

#include <android/log.h>

#include <cstdio>
#include <new>

#include "DiagCmdProcessor.h"

namespace {

constexpr char kVersion[] = "ORB-20250524-d9c57ad5";

// Log points: line numbers that log consumers rely on.
constexpr int kPrintVersionLine = 155;
constexpr int kDecodeBuffLine = 303;

constexpr size_t kDecodeBufferSize = 64;
constexpr size_t kPersistSettingSize = 50;

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

void Log::writeRecord(int level, const LogLine& line) {
  const char* const platformTag = logTag.load();
  if (home.isForked()) {
    __android_log_print(level, platformTag, "%s", line.text());
    return;
  }
  const Writer writer(mutex);
  const AlogFunction alog = orb_alog_fn.load();
  if (alog != nullptr) {
    alog(level, platformTag, "%s", line.text());
  } else {
    __android_log_print(level, platformTag, "%s", line.text());
  }
  requestDumpWhenFull();
  const bool deferred = deferredLogging.load();
  const bool sends = !deferred && DiagCmdProcessor::isListening();
  if (!encryptionEnabled && !deferred && !sends) return;  // nobody wants the record

  LogRecord record;
  record.stamp(level);
  if (encryptionEnabled || sends) {
    char entry[LogLine::kBufferSize];
    const size_t size = record.formatEntry(line.view(), entry);
    if (encryptionEnabled) encryptRecord({entry, size});
    if (sends && size > 0) DiagCmdProcessor::sendPacket({entry, size});
  }
  if (deferred) queueRecord(record, line.view());
}

void Log::printToAdb(int level, const char* tag, const char* file, const char* function, int line,
                     const char* format, ...) {
  const ErrnoKeeper keeper;
  va_list args;
  va_start(args, format);
  const LogLine text(tag, file, function, line, format, args);
  va_end(args);
  __android_log_print(level, logTag.load(), "%s", text.text());
  if (home.isForked()) return;
  requestDumpWhenFull();
  LogRecord record;
  record.stamp(level);
  queueRecord(record, text.view());
}

void Log::logModuleDebug(const char* format, ...) {
  const ErrnoKeeper keeper;
  constexpr std::string_view kHead = "| orbLog | ";
  char text[LogLine::kBufferSize] = "| orbLog | ";
  va_list args;
  va_start(args, format);
  std::vsnprintf(text + kHead.size(), sizeof text - kHead.size(), format, args);
  va_end(args);
  __android_log_print(ANDROID_LOG_DEBUG, logTag.load(), "%s", text);
}

void Log::printVersion() {
  addLogRecord(ANDROID_LOG_INFO, "ORB", kSource, "printVersion", kPrintVersionLine, "version %s",
               kVersion);
}

void Log::dMapLog(int level, const std::string& message) {
  if (home.isForked()) return;
  const ErrnoKeeper keeper;
  const Writer writer(mutex);
  if (dmapSuppressed.load()) return;
  if (dmapDebugSuppressed.load() && level == ANDROID_LOG_DEBUG) return;
  const AlogFunction alog = orb_alog_fn.load();
  if (alog != nullptr) alog(level, "DMAP", "%s", message.c_str());
  requestDumpWhenFull();
  if (!encryptionEnabled && !DiagCmdProcessor::isListening()) return;
  LogRecord record;
  record.stamp(level, true);
  char entry[LogLine::kBufferSize];
  const size_t size = record.formatEntry(message, entry);
  // Unlike a line's, an encrypted record of the data path does not go out in the clear as well.
  if (encryptionEnabled) {
    encryptRecord({entry, size});
  } else if (size > 0) {
    DiagCmdProcessor::sendPacket({entry, size});
  }
}

void Log::requestDumpWhenFull() {
  if (records.size() < kFullQueue) return;
  try {
    dumpRequests.pushOnce(BUFFER_IS_FULL);
  } catch (const std::bad_alloc&) {
    // The next record asks again.
  }
}

void Log::queueRecord(const LogRecord& stamped, std::string_view message) {
  try {
    auto record = std::make_shared<LogRecord>(stamped);
    record->message = message;
    records.push(std::move(record));
  } catch (const std::bad_alloc&) {
    // Without memory the line is in the platform log only; logging never fails its caller.
  }
}

void Log::addDumpRequest(DumpRequestType type) {
  if (home.isForked()) return;  // it has no dumper
  try {
    dumpRequests.push(type);
  } catch (const std::bad_alloc&) {
    // Other reasons to dump come again.
    if (type == SHUTDOWN) dumpRequests.end();
  }
}

void Log::writeToDiag(const std::string& entry) { DiagCmdProcessor::writeToDiag(entry); }

bool Log::decodeBuff(unsigned char* request, unsigned short length,
                     std::vector<unsigned char>& out) {
  if (request == nullptr || length == 0) return false;
  out.resize(kDecodeBufferSize);
  unsigned short outLength = kDecodeBufferSize;
  const DecodeBufferFunction decode = orbDecodeBuffer.load();
  const bool ok = decode != nullptr && decode(request, length, out.data(), &outLength);
  addLogRecord(ANDROID_LOG_DEBUG, "ORB", kSource, "decodeBuff", kDecodeBuffLine, "outputlen:%d ",
               outLength);
  if (ok) out.resize(outLength);
  return ok;
}

bool Log::getPersistSetting(unsigned char& setting, std::vector<unsigned char>& out) {
  const GetPersistSettingFunction get = orbGetPersistSetting.load();
  if (get == nullptr) return false;
  out.resize(kPersistSettingSize);
  const int size = get(&setting, out.data());
  if (size >= 1) out.resize(static_cast<size_t>(size));
  return true;
}
