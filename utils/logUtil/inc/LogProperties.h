// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

// The system's properties of the log, as they are while it is set up. A plain value.
struct LogProperties {
  static LogProperties read();

  bool deferredLogging = false;      // records wait for the next dump
  bool dmapDebugSuppressed = false;  // no lines of the data path at level debug
  bool dmapSuppressed = false;       // none at all
  bool logPermsEnabled = false;      // encrypted files may be read by their group
};

// The text of a property as an integer in decimal, "0x" hexadecimal or leading-zero octal; the
// default when it is missing, no number, or above the range of int.
int property_get_int32(const char* key, int defaultValue);
