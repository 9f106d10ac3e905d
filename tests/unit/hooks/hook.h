// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

// The functions that a test hook library calls; the test finds the table as "hookTable" in the
// library.
struct HookTable {
  void (*alog)(int level, const char* tag, const char* format, const char* text);
  int (*getPersistSetting)(unsigned char* setting, unsigned char* out);
  bool (*decodeBuffer)(unsigned char* in, unsigned short inLength, unsigned char* out,
                       unsigned short* outLength);
};
