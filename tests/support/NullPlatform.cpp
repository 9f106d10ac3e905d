// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
//
// The platform of the benchmarks. It formats each line, as any platform must, and drops it. It
// drops packets, too. Used by any thread.
#include "NullPlatform.h"

#include <android/log.h>
#include <cutils/properties.h>
#include <diag/diag.h>

#include <atomic>
#include <cstdarg>
#include <cstdio>
#include <cstring>

namespace {

const char* logging = "";
std::atomic<bool> listening{false};

}  // namespace

void nullplatform::setLogging(const char* value) { logging = value; }

void nullplatform::setListening(bool on) { listening = on; }

int __android_log_print(int, const char*, const char* fmt, ...) {
  char text[1024];
  va_list args;
  va_start(args, fmt);
  const int size = std::vsnprintf(text, sizeof text, fmt, args);
  va_end(args);
  asm volatile("" : : "r"(text) : "memory");  // the text counts as used
  return size;
}

int property_get(const char* key, char* value, const char* default_value) {
  const bool known = std::strcmp(key, "persist.vendor.data.orb.logging") == 0 && *logging != '\0';
  const char* const fallback = default_value != nullptr ? default_value : "";
  std::snprintf(value, PROPERTY_VALUE_MAX, "%s", known ? logging : fallback);
  return static_cast<int>(std::strlen(value));
}

int8_t property_get_bool(const char*, int8_t default_value) { return default_value; }

boolean Diag_LSM_Init(unsigned char*) { return 1; }
void diagpkt_tbl_reg(const diagpkt_user_table_type*) {}
boolean log_status(log_code_type) { return listening ? 1 : 0; }
void* log_alloc(log_code_type, unsigned int length) {
  static thread_local char packet[1024];
  return length <= sizeof packet ? packet : nullptr;
}
void log_commit(void* packet) {
  asm volatile("" : : "r"(packet) : "memory");  // the packet counts as used
}
