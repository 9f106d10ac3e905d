// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "FuzzPlatform.h"

#include <android/log.h>
#include <cutils/properties.h>
#include <diag/diag.h>

#include <atomic>
#include <cstdarg>
#include <cstdlib>
#include <cstring>
#include <mutex>

#include "Check.h"

namespace {

std::atomic<fuzzplatform::Observer> observer{nullptr};
std::atomic<bool> listening{false};
std::atomic<bool> logPerms{false};
thread_local std::vector<std::string>* captured = nullptr;

struct Property {
  std::mutex mutex;  // guards value
  std::string value;
};
Property& logging() {
  static Property* const property = new Property;  // threads may use it while the process exits
  return *property;
}

}  // namespace

namespace fuzzplatform {

void setObserver(Observer newObserver) { observer = newObserver; }

Capture::Capture() { captured = &mLines; }
Capture::~Capture() { captured = nullptr; }

void setLogging(const std::string& value) {
  const std::lock_guard<std::mutex> lock(logging().mutex);
  logging().value = value;
}
void setLogPerms(bool on) { logPerms = on; }
void setListening(bool on) { listening = on; }

}  // namespace fuzzplatform

extern "C" {

int __android_log_print(int, const char*, const char* fmt, ...) {
  char text[4096];
  va_list args;
  va_start(args, fmt);
  const int size = std::vsnprintf(text, sizeof text, fmt, args);
  va_end(args);
  FUZZ_CHECK(size >= 0 && static_cast<size_t>(size) <= fuzzplatform::kLongestLine);
  if (captured != nullptr) captured->push_back(text);
  if (const auto observe = observer.load()) observe(text);
  return size;
}

int property_get(const char* key, char* value, const char* default_value) {
  std::string text = default_value != nullptr ? default_value : "";
  if (std::strcmp(key, "persist.vendor.data.orb.logging") == 0) {
    const std::lock_guard<std::mutex> lock(logging().mutex);
    if (!logging().value.empty()) text = logging().value;
  }
  std::snprintf(value, PROPERTY_VALUE_MAX, "%s", text.c_str());
  return static_cast<int>(std::strlen(value));
}

int8_t property_get_bool(const char*, int8_t) { return logPerms ? 1 : 0; }

boolean Diag_LSM_Init(unsigned char*) { return 1; }
void diagpkt_tbl_reg(const diagpkt_user_table_type*) {}
boolean log_status(log_code_type) { return listening ? 1 : 0; }
void* log_alloc(log_code_type, unsigned int length) { return std::malloc(length); }
void log_commit(void* packet) { std::free(packet); }

}  // extern "C"
