// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
//
// The hook library of Log: it may take the place of the platform log, and decodes the diagnostic
// command.
#include <dlfcn.h>
#include <signal.h>

#include <cstdio>

#include "Log.h"
#include "LogTag.h"
#include "Thread.h"

namespace {

constexpr char kHookLibrary[] = "liborbalog.so";
constexpr size_t kDecodeBufferSize = 64;

// Log points: line numbers that log consumers rely on.
constexpr int kCannotOpenHookLine = 225;
constexpr int kDecodeBuffLine = 303;

}  // namespace

std::atomic<Log::AlogFunction> Log::orb_alog_fn{nullptr};
std::atomic<Log::GetPersistSettingFunction> Log::orbGetPersistSetting{nullptr};
std::atomic<Log::DecodeBufferFunction> Log::orbDecodeBuffer{nullptr};
void* Log::_libalog_handle = nullptr;

void Log::loadHook() {
  void* const library = dlopen(kHookLibrary, RTLD_NOW);
  if (library == nullptr) {
    dlerror();  // the application's thread must not find this error
    addLogRecord(ANDROID_LOG_ERROR, "ORB", kLogSource, "init", kCannotOpenHookLine,
                 "cannot open liborbalog.so");
    return;
  }
  if (!resolve(library, "alog", orb_alog_fn)) {
    addLogRecord(ANDROID_LOG_ERROR, "ORB", kLogSource, "init", __LINE__,
                 "cannot find main function");
    dlclose(library);
    return;
  }
  _libalog_handle = library;
  if (!resolve(library, "getPersistSetting", orbGetPersistSetting) ||
      !resolve(library, "decodeBuffer", orbDecodeBuffer)) {
    addLogRecord(ANDROID_LOG_ERROR, "ORB", kLogSource, "init", __LINE__,
                 "cannot find debug cmd function");
    return;
  }
  struct sigaction action = {};
  action.sa_handler = eintrTestHandler;  // without SA_RESTART: its purpose is to interrupt calls
  sigemptyset(&action.sa_mask);
  sigaction(SIGUSR1, &action, nullptr);
  letThreadsTakeUserSignal();
}

template <class Function>
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
  const LogLine line("ORB", kLogSource, "eintrTestHandler", __LINE__, text);
  __android_log_print(ANDROID_LOG_DEBUG, LogTag::get(), "%s", line.text());
}

bool Log::decodeBuff(unsigned char* request, unsigned short length,
                     std::vector<unsigned char>& out) {
  if (request == nullptr || length == 0) return false;
  out.resize(kDecodeBufferSize);
  unsigned short outLength = kDecodeBufferSize;
  const DecodeBufferFunction decode = orbDecodeBuffer.load();
  const bool ok = decode != nullptr && decode(request, length, out.data(), &outLength);
  addLogRecord(ANDROID_LOG_DEBUG, "ORB", kLogSource, "decodeBuff", kDecodeBuffLine, "outputlen:%d ",
               outLength);
  if (ok) out.resize(outLength);
  return ok;
}
