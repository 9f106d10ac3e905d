// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "DeepPlatform.h"

#include <android/log.h>
#include <cutils/properties.h>
#include <diag/diag.h>

#include <atomic>
#include <cstdarg>
#include <cstdio>
#include <cstring>

#include "Interposed.h"

namespace {

std::atomic<void (*)()> inLines{nullptr};
thread_local bool tBusy = false;

void take(const char* text) {
  char taken[deepplatform::kTaken];
  std::memset(taken, text[0], sizeof taken);
  asm volatile("" : : "r"(taken) : "memory");  // prevents the removal of the variable
  void (*const action)() = inLines;
  if (action == nullptr || tBusy) return;
  tBusy = true;  // because the action may log, too
  action();
  tBusy = false;
}

}  // namespace

void deepplatform::setInLines(void (*action)()) { inLines = action; }

int __android_log_print(int, const char*, const char* fmt, ...) {
  char text[1024];
  va_list args;
  va_start(args, fmt);
  const int size = std::vsnprintf(text, sizeof text, fmt, args);
  va_end(args);
  take(text);
  return size;
}

int property_get(const char*, char* value, const char* default_value) {
  std::snprintf(value, PROPERTY_VALUE_MAX, "%s", default_value != nullptr ? default_value : "");
  return static_cast<int>(std::strlen(value));
}
int8_t property_get_bool(const char*, int8_t default_value) { return default_value; }

boolean Diag_LSM_Init(unsigned char*) { return 1; }
void diagpkt_tbl_reg(const diagpkt_user_table_type*) {}
boolean log_status(log_code_type) { return 1; }
void* log_alloc(log_code_type, unsigned int length) {
  static thread_local char packet[1024];
  return length <= sizeof packet ? packet : nullptr;
}
void log_commit(void* packet) { take(static_cast<const char*>(packet)); }

// The program itself is the hook library.
extern "C" {

void* dlopen(const char* name, int flags) {
  const bool hook = name != nullptr && std::strcmp(name, "liborbalog.so") == 0;
  return ORB_NEXT(dlopen)(hook ? nullptr : name, flags);
}

__attribute__((format(printf, 3, 4))) int alog(int, const char*, const char* format, ...) {
  char text[1024];
  va_list args;
  va_start(args, format);
  const int size = std::vsnprintf(text, sizeof text, format, args);
  va_end(args);
  take(text);
  return size;
}
int getPersistSetting(unsigned char*, unsigned char*) { return 0; }
bool decodeBuffer(unsigned char*, unsigned short, unsigned char*, unsigned short*) { return false; }

}  // extern "C"
