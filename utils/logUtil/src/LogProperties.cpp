// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "LogProperties.h"

#include <cutils/properties.h>

#include <cerrno>
#include <cinttypes>
#include <climits>

namespace {

constexpr char kLoggingProperty[] = "persist.vendor.data.orb.logging";
constexpr char kLogPermsProperty[] = "persist.vendor.data.orb.log_perms";

// Bits of the logging property.
constexpr int kDeferredBit = 1;
constexpr int kDmapDebugOffBit = 2;
constexpr int kDmapOffBit = 4;

}  // namespace

LogProperties LogProperties::read() {
  const int bits = property_get_int32(kLoggingProperty, 0);
  LogProperties properties;
  properties.deferredLogging = (bits & kDeferredBit) != 0;
  properties.dmapDebugSuppressed = (bits & (kDmapDebugOffBit | kDmapOffBit)) != 0;
  properties.dmapSuppressed = (bits & kDmapOffBit) != 0;
  properties.logPermsEnabled = property_get_bool(kLogPermsProperty, 0) != 0;
  return properties;
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
